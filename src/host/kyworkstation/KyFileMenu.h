#pragma once

#include "KyStudyLoader.h"

#include <QtWidgets/QMenu>

/// The menu that opens and closes studies, the settings and the program. Made by the main window, which does
/// what the signals say.
class KyFileMenu : public QMenu
{
    Q_OBJECT

public:
    explicit KyFileMenu(QWidget* inParent);

Q_SIGNALS:
    /// The user has chosen this folder.
    void folderChosen(const QString& inFolder, KyStudyLoader::Kind inKind);
    void closeStudiesWanted();
    void settingsWanted();
    void quitWanted();

private:
    QAction& add(const QString& inText, const QKeySequence& inKeys, const QString& inTip);
    void chooseFolder(KyStudyLoader::Kind inKind);
};
