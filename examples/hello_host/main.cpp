// A host in a few lines: what a module of a client does to have its work scripted.

#include <kyscript/KyScriptExternalMetaObject.h>
#include <kyscript/KyScriptExternalObject.h>
#include <kyscript/KyScriptProgram.h>
#include <kyscript/KyScriptRunner.h>

#include <kybase/KySessionContext.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvRegistry.h>

#include <QtWidgets/QApplication>

#include <cstdio>

class Desk : public KyScriptExternalObject // one object for every engine, as the global "Desk"
{
    Q_OBJECT
public:
    using KyScriptExternalObject::KyScriptExternalObject;
    Q_INVOKABLE void say(QString inText) { std::puts(qPrintable(inText)); }
};

class Note : public QObject // a class for every engine: new Note()
{
    Q_OBJECT
    Q_PROPERTY(QString text MEMBER mText)
public:
    Q_INVOKABLE Note() {}

private:
    QString mText;
};

struct NoteClass : KyScriptExternalMetaObject
{
    NoteClass()
        : KyScriptExternalMetaObject(nullptr, QStringLiteral("Note"), &Note::staticMetaObject)
    {}
    ~NoteClass() override = default;
};

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    OvRegistry registry(nullptr); // settings in memory
    OvPropertyPool pool;
    KySessionContext session; // without studies
    Desk desk(nullptr, QStringLiteral("Desk"), ScriptExternalKindA);
    NoteClass noteClass;

    KyScriptRunner runner;
    const KyScriptProgram definitions(
        QStringLiteral("function greet(name, times) {"
                       "  var note = new Note();"
                       "  note.text = 'Hello ' + name + ' from ' + Host.objectName;"
                       "  for (var i = 0; i < times; ++i) Desk.say(note.text);"
                       "  return times; }"),
        "greetings");
    if (!runner.initEngine(ScriptExternalKindA | ScriptExternalMetaObjects, definitions))
        return 1;
    runner.createCurrentContext();
    auto* host = new QObject; // the context owns it
    host->setObjectName(QStringLiteral("C++"));
    runner.addScriptObjectToCurrentContext(QStringLiteral("Host"), host);
    const QJSValue times =
        runner.callFunction(runner.getCurrentContextFunction(QStringLiteral("greet")), "Ada", 2);
    runner.destroyCurrentContext();
    return times.toInt() == 2 ? 0 : 1;
}

#include "main.moc"
