#pragma once

#include <QtWidgets/QMenu>

/// The menu of scripts: run one, run a recent one again, open the console of an engine. Made by the main
/// window.
///
/// Recent scripts and the names of consoles are properties, "Workstation.RecentScripts" and
/// "Workstation.ConsoleNames", and so are kept between starts. A menu that opens shows them as they are.
class KyScriptingMenu : public QMenu
{
    Q_OBJECT

public:
    static constexpr int MaxRecentScripts = 8;

    explicit KyScriptingMenu(QWidget* inParent);

    /// Labels and registers the menu's properties, once, before the first property pool is made.
    static void registerProperties();

    /// Puts \a inFile first among the recent scripts.
    static void addRecentScript(const QString& inFile);

Q_SIGNALS:
    /// The user wants this script to run.
    void scriptChosen(const QString& inFile);

private:
    void chooseScript();
    void fillRecentScripts();
    void fillConsoles();
    void addConsole(const QString& inName, const QString& inText, const QKeySequence& inKeys);
    void askForConsole();

    QMenu* const mRecent;
    QAction* mBehindConsoles = nullptr;
    QList<QAction*> mConsoles;
};
