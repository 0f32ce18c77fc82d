#include "KyScriptInterface.h"

#include "KyScriptingWindow.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QAction>

#include <algorithm>
#include <map>
#include <vector>

namespace {

/// A row without an engine belongs to one that is being constructed. Never deleted: the application object,
/// and the engines with it, may end late.
std::map<QString, KyScriptInterface*>& instances()
{
    static auto& sInstances = *new std::map<QString, KyScriptInterface*>;
    return sInstances;
}

void eraseRowOf(const KyScriptInterface* inEngine)
{
    auto& rows = instances();
    const auto it =
        std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return row.second == inEngine; });
    if (it != rows.end())
        rows.erase(it);
}

} // namespace

KyScriptInterface::KyScriptInterface(QObject* inParent)
    : KyScriptEngine(inParent, ScriptAllOptions)
{
    eraseRowOf(this);
}

KyScriptInterface::~KyScriptInterface()
{
    eraseRowOf(this);
}

KyScriptInterface& KyScriptInterface::getInstance(const QString& inName)
{
    auto& rows = instances();
    if (const auto it = rows.find(inName); it != rows.end() && it->second)
        return *it->second;

    rows[inName] = nullptr;
    auto* engine = new KyScriptInterface(QCoreApplication::instance());
    rows[inName] = engine;
    return *engine;
}

bool KyScriptInterface::hasInstances()
{
    const auto& rows = instances();
    return !rows.empty() && rows.begin()->second;
}

void KyScriptInterface::cleanupInstances()
{
    // Deleting what a script has left may end or begin an engine: walk a copy, look each up again.
    std::vector<QPointer<KyScriptInterface>> engines;
    for (const auto& [name, engine] : instances())
        engines.emplace_back(engine);
    for (const auto& engine : engines) {
        if (engine)
            engine->cleanup();
    }
}

void KyScriptInterface::showConsole()
{
    // Never deleted: a console lives as long as the process.
    static auto& consoles = *new std::map<QString, KyScriptingWindow*>;

    const auto* action = qobject_cast<QAction*>(sender());
    const QString name = action ? action->data().toString() : QString();
    KyScriptingWindow*& console = consoles[name];
    if (!console) {
        console = new KyScriptingWindow(name, KyScriptingWindow::JavaScriptEngine);
        const QString title = QStringLiteral("Console[QJSEngine]");
        console->setWindowTitle(name.isEmpty() ? title : title + QStringLiteral(" (%1)").arg(name));
    }
    console->setWindowState(console->windowState() & ~Qt::WindowMinimized);
    console->show();
    console->raise();
    console->activateWindow();
}
