#include "KyFileMenu.h"

#include <QtWidgets/QFileDialog>

KyFileMenu::KyFileMenu(QWidget* inParent)
    : QMenu(tr("&File"), inParent)
{
    setObjectName(QStringLiteral("fileMenu"));
    const QAction& open = add(tr("&Open Folder…"), QKeySequence::Open, tr("Open the studies below a folder"));
    connect(&open, &QAction::triggered, this, [this] { chooseFolder(KyStudyLoader::Kind::Primary); });
    const QAction& openMore =
        add(tr("Open &Additional Folder…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O),
            tr("Open the studies below a folder beside the primary ones, such as priors"));
    connect(&openMore, &QAction::triggered, this, [this] { chooseFolder(KyStudyLoader::Kind::Additional); });
    const QAction& closeAll =
        add(tr("&Close All Studies"), QKeySequence(Qt::CTRL | Qt::Key_W), tr("Empty the study list"));
    connect(&closeAll, &QAction::triggered, this, &KyFileMenu::closeStudiesWanted);
    addSeparator();
    QAction& settings = add(tr("&Settings…"), QKeySequence(Qt::CTRL | Qt::Key_Comma),
                            tr("Change the settings of the application"));
    settings.setMenuRole(QAction::PreferencesRole);
    connect(&settings, &QAction::triggered, this, &KyFileMenu::settingsWanted);
    addSeparator();
    QAction& quit = add(tr("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), tr("End the program"));
    quit.setMenuRole(QAction::QuitRole);
    connect(&quit, &QAction::triggered, this, &KyFileMenu::quitWanted);
}

QAction& KyFileMenu::add(const QString& inText, const QKeySequence& inKeys, const QString& inTip)
{
    QAction* added = addAction(inText);
    added->setShortcut(inKeys);
    added->setStatusTip(inTip);
    return *added;
}

void KyFileMenu::chooseFolder(KyStudyLoader::Kind inKind)
{
    const QString folder = QFileDialog::getExistingDirectory(parentWidget(), tr("Open Folder"));
    if (!folder.isEmpty())
        Q_EMIT folderChosen(folder, inKind);
}
