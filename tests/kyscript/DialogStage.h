#pragma once

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>

#include <kyscript/KyScriptDialog.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptProgram.h>

#include <ovvolren/OvServerPeer.h>

#include <QAbstractButton>
#include <QButtonGroup>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QTextBrowser>

/// The lines of a session's log, as "source|text".
class DialogLines final : public RnLogSink
{
public:
    void write(const RnLogRecord& inRecord) override
    {
        levels.append(inRecord.level);
        lines.append(QStringLiteral("%1|%2").arg(QString::fromLatin1(inRecord.context.c_str()),
                                                 QString::fromLatin1(inRecord.text.c_str())));
    }
    QStringList take() { return std::exchange(lines, {}); }

    QStringList lines;
    QList<int> levels;
};

/// An engine on a platform with a session log, and the dialog that a script has put into the global `d`.
class DialogStage
{
public:
    DialogStage()
        : session(std::make_shared<DialogLines>())
        , peer(std::make_unique<OvServerPeer>())
        , platform(std::make_unique<KyTestPlatform>())
        , engine(std::make_unique<KyScriptEngine>(nullptr, ScriptDialog | ScriptMessage))
    {
        peer->sessionLog().addSink(session);
    }
    ~DialogStage()
    {
        engine.reset();
        platform.reset();
    }
    DialogStage(const DialogStage&) = delete;
    DialogStage& operator=(const DialogStage&) = delete;

    /// The value of a run of its own, as text.
    QString run(const QString& inSource)
    {
        return engine->runScript(KyScriptProgram(inSource, ""), false, false, false).toString();
    }

    /// Makes `d` of a configuration in JavaScript; `answers` gets what it tells at each `processed`.
    KyScriptDialog& make(const QString& inConfig = QString())
    {
        run(QStringLiteral("var d = new Dialog(%1), answers = [];"
                           "d.processed.connect(function() {"
                           "  answers.push([d.result(), d.clickedButton(), d.clickedButtonMenuItem(),"
                           "                d.autoClosed(), d.visible].join(' ')); });")
                .arg(inConfig));
        return dialog();
    }

    KyScriptDialog& dialog() const
    {
        auto* found =
            qobject_cast<KyScriptDialog*>(engine->globalObject().property(QStringLiteral("d")).toQObject());
        if (!found)
            qFatal("there is no dialog");
        return *found;
    }

    /// Lets the script show the dialog, and waits until it is on the screen.
    KyScriptDialog& show()
    {
        KyScriptDialog& shown = dialog();
        run(QStringLiteral("d.show()"));
        if (!QTest::qWaitFor([&] { return shown.isVisible(); }) || !QTest::qWaitForWindowExposed(&shown))
            qFatal("the dialog did not come");
        return shown;
    }
    KyScriptDialog& makeAndShow(const QString& inConfig = QString())
    {
        make(inConfig);
        return show();
    }

    QStringList answers() { return run(QStringLiteral("answers.join()")).split(u',', Qt::SkipEmptyParts); }

    template <class T>
    T* part(const char* inName) const
    {
        T* found = dialog().findChild<T*>(QStringLiteral("KyScriptDialog_") + QLatin1String(inName));
        if (!found)
            qFatal("the dialog has no %s", inName);
        return found;
    }
    QLabel* label() const { return part<QLabel>("label"); }
    QTextEdit* edit() const { return part<QTextEdit>("edit"); }
    QTextBrowser* browser() const { return part<QTextBrowser>("textBrowser"); }
    QLineEdit* lineEdit() const { return part<QLineEdit>("lineEdit"); }
    QWidget* indicator() const { return part<QWidget>("indicator"); }
    QPushButton* button(int inIndex) const
    {
        return qobject_cast<QPushButton*>(part<QButtonGroup>("group")->button(inIndex));
    }
    QStringList buttonTexts() const
    {
        QStringList texts;
        const auto all = part<QButtonGroup>("group")->buttons();
        for (const QAbstractButton* one : all)
            texts.append(one->text());
        return texts;
    }

    void click(int inIndex) const { QTest::mouseClick(button(inIndex), Qt::LeftButton); }

    /// Opens the menu of a button by the mouse, and clicks one of its items.
    void choose(int inIndex, int inItem) const
    {
        QMenu* menu = button(inIndex)->menu();
        QTimer::singleShot(0, menu, [menu, inItem] {
            QTest::mouseClick(menu, Qt::LeftButton, {},
                              menu->actionGeometry(menu->actions().at(inItem)).center());
        });
        // The menu opens at the press, and its choice may end the button.
        QPointer<QMenu> open(menu);
        QTest::mousePress(button(inIndex), Qt::LeftButton);
        QTRY_VERIFY(!open || !open->isVisible());
    }

    const std::shared_ptr<DialogLines> session;
    std::unique_ptr<OvServerPeer> peer;
    std::unique_ptr<KyTestPlatform> platform;
    std::unique_ptr<KyScriptEngine> engine;
};
