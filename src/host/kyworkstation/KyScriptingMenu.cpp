#include "KyScriptingMenu.h"

#include <kyscript/KyScriptInterface.h>

#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvTranslationProperty.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QInputDialog>

namespace {

using Names = QList<QString>;

constexpr const char* GroupId = "Workstation";
constexpr const char* RecentScriptsId = "Workstation.RecentScripts";
constexpr const char* ConsoleNamesId = "Workstation.ConsoleNames";

Names defaultConsoles()
{
    return {QStringLiteral("Reports"), QStringLiteral("Tools")};
}

Names names(const char* inId, const Names& inDefault)
{
    const OvPropertyPool* pool = OvPropertyPool::instance();
    return pool ? pool->value<Names>(inId, inDefault) : inDefault;
}

void setNames(const char* inId, const Names& inNames)
{
    OvPropertyPool* pool = OvPropertyPool::instance();
    auto* property = pool ? pool->property<Names>(inId, Names(), pool->defaultSerializer()) : nullptr;
    if (!property)
        return;
    property->value = inNames;
    property->serialize();
    property->propagate(true);
}

/// Text for a menu, in which an ampersand is no mnemonic.
QString plain(QString inText)
{
    return inText.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace

KyScriptingMenu::KyScriptingMenu(QWidget* inParent)
    : QMenu(tr("&Scripting"), inParent)
    , mRecent(new QMenu(tr("Re&cent Scripts"), this))
{
    setObjectName(QStringLiteral("scriptingMenu"));
    QAction* run = addAction(tr("&Run Script…"), this, &KyScriptingMenu::chooseScript);
    run->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    run->setStatusTip(tr("Run a JavaScript file on the default engine"));
    addMenu(mRecent);
    mRecent->setObjectName(QStringLiteral("recentScripts"));
    connect(mRecent, &QMenu::aboutToShow, this, &KyScriptingMenu::fillRecentScripts);
    addSection(tr("Consoles"));
    mBehindConsoles = addSeparator();
    QAction* ask = addAction(tr("&New Console…"), this, &KyScriptingMenu::askForConsole);
    ask->setStatusTip(tr("Open the console of an engine with another name"));
    ask->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N));
    connect(this, &QMenu::aboutToShow, this, &KyScriptingMenu::fillConsoles);
    fillRecentScripts();
    fillConsoles();
}

void KyScriptingMenu::registerProperties()
{
    OvTranslationProperty::translate(GroupId, QT_TRANSLATE_NOOP("OvTranslationProperty", "Workstation"),
                                     nullptr);
    OvTranslationProperty::translate(RecentScriptsId,
                                     QT_TRANSLATE_NOOP("OvTranslationProperty", "Recent Scripts"), nullptr);
    OvTranslationProperty::translate(
        ConsoleNamesId, QT_TRANSLATE_NOOP("OvTranslationProperty", "Engines with a Console in the Menu"),
        nullptr);
    OvPropertyPool::addRegisterProperties([](OvPropertyPool& ioPool) {
        ioPool.property<Names>(RecentScriptsId, Names(), ioPool.defaultSerializer());
        ioPool.property<Names>(ConsoleNamesId, defaultConsoles(), ioPool.defaultSerializer());
    });
}

void KyScriptingMenu::addRecentScript(const QString& inFile)
{
    const QString file = QFileInfo(inFile).absoluteFilePath();
    Names recent = names(RecentScriptsId, {});
    recent.removeAll(file);
    recent.prepend(file);
    setNames(RecentScriptsId, recent.mid(0, MaxRecentScripts));
}

void KyScriptingMenu::chooseScript()
{
    const Names recent = names(RecentScriptsId, {});
    const QString folder = recent.isEmpty() ? QDir::homePath() : QFileInfo(recent.first()).path();
    const QString file = QFileDialog::getOpenFileName(parentWidget(), tr("Run Script"), folder,
                                                      tr("Scripts (*.js);;All files (*)"));
    if (!file.isEmpty())
        Q_EMIT scriptChosen(file);
}

void KyScriptingMenu::fillRecentScripts()
{
    mRecent->clear();
    const Names recent = names(RecentScriptsId, {});
    mRecent->setEnabled(!recent.isEmpty());
    int number = 0;
    for (const QString& file : recent) {
        QAction* action = mRecent->addAction(
            QStringLiteral("&%1  %2").arg(++number).arg(plain(QFileInfo(file).fileName())));
        action->setToolTip(file);
        action->setStatusTip(file);
        connect(action, &QAction::triggered, this, [this, file] { Q_EMIT scriptChosen(file); });
    }
    mRecent->setToolTipsVisible(true);
    mRecent->addSeparator();
    mRecent->addAction(tr("&Clear List"), this, [this] {
        setNames(RecentScriptsId, {});
        fillRecentScripts();
    });
}

void KyScriptingMenu::fillConsoles()
{
    fillRecentScripts();
    qDeleteAll(mConsoles);
    mConsoles.clear();
    addConsole(QString(), tr("&Default Console"), QKeySequence(Qt::Key_F12));
    int number = 0;
    for (const QString& name : names(ConsoleNamesId, defaultConsoles())) {
        if (name.isEmpty())
            continue;
        ++number;
        const QString mnemonic = number < 10 ? QStringLiteral("&%1  ").arg(number) : QString();
        addConsole(name, mnemonic + tr("Console “%1”").arg(plain(name)),
                   number < 10 ? QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key(Qt::Key_0 + number))
                               : QKeySequence());
    }
}

/// The engine takes the name from the action; any engine can open all consoles.
void KyScriptingMenu::addConsole(const QString& inName, const QString& inText, const QKeySequence& inKeys)
{
    auto* action = new QAction(inText, this);
    action->setData(inName);
    action->setShortcut(inKeys);
    action->setObjectName(QStringLiteral("console.") + inName);
    insertAction(mBehindConsoles, action);
    mConsoles.append(action);
    connect(action, &QAction::triggered, &KyScriptInterface::getInstance(QString()),
            &KyScriptInterface::showConsole);
}

void KyScriptingMenu::askForConsole()
{
    bool isOk = false;
    const QString name = QInputDialog::getText(parentWidget(), tr("New Console"), tr("&Name of the engine:"),
                                               QLineEdit::Normal, QString(), &isOk)
                             .trimmed();
    if (!isOk || name.isEmpty())
        return;
    Names all = names(ConsoleNamesId, defaultConsoles());
    if (!all.contains(name))
        setNames(ConsoleNamesId, all << name);
    fillConsoles();
    for (QAction* action : std::as_const(mConsoles)) {
        if (action->data().toString() == name)
            action->trigger();
    }
}
