// The module itself as a process of Wine: reads scripts, runs them, and says what they give. This half knows
// Qt and nothing of Windows.

#include "module.h"
#include "Lines.h"

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptOptions.h>

#include <QCoreApplication>

int runScripts(int inArgc, char** inArgv)
{
    QCoreApplication application(inArgc, inArgv);
    KyScriptEngine engine(nullptr, ScriptRichEditCtrl | ScriptWordCtrl);
    Lines::say("ready");
    for (std::vector<std::string> words; Lines::read(words);) {
        const QString script = QString::fromStdU16String(Lines::wideFromHex(words.at(0)));
        const QString result = engine.QJSEngine::evaluate(script).toString();
        Lines::say(Lines::wideToHex(result.toStdU16String()));
    }
    return 0;
}
