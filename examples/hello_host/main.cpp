// A host in a few lines: a module of a client that has its work scripted.

#include <kyscript/KyScriptExternalMetaObject.h>
#include <kyscript/KyScriptExternalObject.h>
#include <kyscript/KyScriptProgram.h>
#include <kyscript/KyScriptRunner.h>

#include <kybase/KySessionContext.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvRegistry.h>

#include <QtWidgets/QApplication>

struct Note : QObject // an object or a class for scripts: what they see are its properties and invokables
{
    Q_OBJECT
    Q_PROPERTY(QString text MEMBER text)
public:
    Q_INVOKABLE Note() {}
    Q_INVOKABLE void print() { qInfo("%s", qPrintable(text)); }
    QString text;
};

struct NoteClass : KyScriptExternalMetaObject
{
    NoteClass()
        : KyScriptExternalMetaObject(nullptr, "Note", &Note::staticMetaObject)
    {}
};

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    OvRegistry registry(nullptr); // the platform: settings in memory, and a session without studies
    OvPropertyPool pool;
    KySessionContext session;

    NoteClass noteClass; // for every engine, from now on: "new Note()"...
    Note board;          // ... and the object "Board"
    KyScriptExternalObject::registerExternalInstance(&board, "Board", ScriptExternalKindA);

    const QString definitions = R"(
        function greet(name, times) {
            var note = new Note();
            note.text = Draft.text + " " + name;
            for (var i = 0; i < times; ++i) note.print();
            Board.text = "greeted " + name;
        })";
    KyScriptRunner runner; // a private engine, with what its options name
    if (!runner.initEngine(ScriptExternalKindA | ScriptExternalMetaObjects,
                           KyScriptProgram(definitions, "greetings")))
        return 1;

    auto* draft = new Note; // for this runner's scripts, until its context, which owns it, is closed
    draft->text = "Hello";
    runner.createCurrentContext();
    runner.addScriptObjectToCurrentContext("Draft", draft);
    const QJSValue result = runner.callFunction(runner.getCurrentContextFunction("greet"), "Ada", 2);
    runner.destroyCurrentContext();

    board.print();
    return result.isError() ? 1 : 0;
}

#include "main.moc"
