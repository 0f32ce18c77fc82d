#pragma once

#include "KyScriptEngine.h"

/// The engine of a name, with all options. One per name in the process; the empty name is the default one,
/// and names mind case.
///
/// Made by the first getInstance() of its name, as a child of the QCoreApplication, with which it dies unless
/// somebody deletes it before; the next getInstance() then makes a new one. Other modules rather hold the
/// facade, KyScriptAbstractInterface. GUI thread only.
class KYSCRIPT_EXPORT KyScriptInterface : public KyScriptEngine
{
    Q_OBJECT

public:
    /// The engine of \a inName, made if need be.
    static KyScriptInterface& getInstance(const QString& inName);

    /// Whether the first name in order has an engine whose construction is over.
    static bool hasInstances();

    /// Collects the garbage of every named engine and deletes what scripts have left on screen or running.
    /// The engines stay usable. For the host at its shut-down, while the application object still lives.
    static void cleanupInstances();

public Q_SLOTS:
    /// Opens the console of an engine, or brings it to the front. The engine's name is the data of the
    /// QAction that sends the signal; without such a sender it is the default engine. One action for each
    /// name can so be connected with any engine. A console is made once for a name; closing it hides it.
    void showConsole();

private:
    friend class KyScriptingWindow;

    explicit KyScriptInterface(QObject* inParent);
    ~KyScriptInterface() override;
};
