// The tool bar and the report editor of the workstation.

#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <common/KyCommandTool.h>
#include <common/KyHostPlatform.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptTool.h>
#include <kyworkstation/KyMainWindow.h>
#include <kyworkstation/KyScriptingMenu.h>
#include <kyworkstation/KyToolBarPanel.h>
#include <kyworkstation/KyToolKeys.h>
#include <kyworkstation/KyWorkstationOptions.h>
#include <kyworkstation/KyWorkstationTools.h>

#include <kybase/KyActionUI.h>
#include <kybase/KyApplication.h>
#include <kybase/KyBaseViewer.h>
#include <kybase/KyToolRegistry.h>
#include <ovbase/OvImageSeries.h>

#include <QDir>
#include <QDockWidget>
#include <QMenu>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QToolButton>

namespace {

class ImageViewer : public KyBaseViewer
{
public:
    using KyBaseViewer::KyBaseViewer;
    OvImageSeries* imageSeries(int) override { return mSeries.get(); }

private:
    const RnHandle<OvImageSeries> mSeries{new OvImageSeries(Ky::ImageSetID())};
};

} // namespace

class tst_kyworkstation_tools : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void toolBarShowsToolsOfTheFolder();
    void filesAreLoadedInTheirOrder();
    void badFileIsToldAndTheOthersLoaded();
    void buttonTriggersTheTool();
    void shiftAndAClickTakeTheTriggerBack();
    void shiftCountsOnlyAlone();
    void checkableToolIsTurnedOver();
    void buttonFollowsTheScript();
    void buttonFollowsTheActiveViewer();
    void newestToolOfAKeyIsShown();
    void groupsAreApart();
    void toolBarIsBounded();
    void toolsMayBeShownAnew();
    void hotKeyTriggersTheTool();
    void userGivesToolsTheirKeys();
    void badKeysAreToldInTheLog_data();
    void badKeysAreToldInTheLog();
    void toolBarHasItsMenuEntryAndItsPlace();
    void failingToolLeavesTheWindowAlone();

    void reportIsClosedAtFirst();
    void reportIsOpenedByItsTool();
    void reportIsOpenedByAScript();
    void reportIsWrittenByTheUserAndByScripts();
    void formatsOfTheReport_data();
    void formatsOfTheReport();
    void reportEndsWithTheWorkOnThePatient_data();
    void reportEndsWithTheWorkOnThePatient();
    void editorOutlivesTheWindow();
    void openReportIsTheOneOnView();
    void templateIsFilledByAScript();
    void readOnlyReportIsNotWritten();
    void changesOfTheReportAreTakenBack();
    void templateIsInsertedByItsTool();
    void handlerOfTheReportMayWrite();

    void commandLineNamesToolFiles();

private:
    void write(const QString& inName, const QByteArray& inText);
    /// Closes the window, if there is one, and opens another one with the tools of the profile.
    QStringList open(const QStringList& inFiles = {});
    void close();
    QToolButton* reportButton(const QString& inText);
    QToolButton* button(const QString& inKey) { return mWindow->findChild<QToolButton*>("tool." + inKey); }
    QString noted() { return KyScriptInterface::getInstance("").evaluate("String(Global.noted)").toString(); }
    static QByteArray tool(const QByteArray& inId, const QByteArray& inScript, const QByteArray& inMore = "")
    {
        return "<x><Tool Id='" + inId + "' " + inMore + "><OnSet>" + inScript + "</OnSet></Tool></x>";
    }

    std::unique_ptr<QTemporaryDir> mProfile;
    std::unique_ptr<KyHostPlatform> mPlatform;
    std::unique_ptr<KyMainWindow> mWindow;
    KyWorkstationTools* mTools = nullptr;
};

void tst_kyworkstation_tools::initTestCase()
{
    KyScriptingMenu::registerProperties();
    KyToolKeys::registerProperties();
}

void tst_kyworkstation_tools::init()
{
    mProfile = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(mProfile->path()).mkpath("tools/icons"));
    KyHostOptions options;
    options.profile = mProfile->path();
    mPlatform = std::make_unique<KyHostPlatform>(options);
    KyScriptInterface::getInstance("").evaluate("Global = {}");
}

void tst_kyworkstation_tools::cleanup()
{
    close();
    mPlatform.reset();
    QVERIFY(KyToolRegistry::tools().empty());
    mProfile.reset();
}

void tst_kyworkstation_tools::write(const QString& inName, const QByteArray& inText)
{
    QFile file(mProfile->filePath(inName));
    if (!file.open(QIODevice::WriteOnly) || file.write(inText) != inText.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
}

QStringList tst_kyworkstation_tools::open(const QStringList& inFiles)
{
    close();
    mWindow = std::make_unique<KyMainWindow>();
    mTools = new KyWorkstationTools(*mWindow, mPlatform->reportEditor());
    const QStringList errors = mTools->load(mProfile->path(), inFiles);
    mWindow->show();
    return errors;
}

void tst_kyworkstation_tools::close()
{
    if (mWindow)
        mWindow->close();
    mWindow.reset();
    KyScriptTool::clearTools();
}

void tst_kyworkstation_tools::toolBarShowsToolsOfTheFolder()
{
    write("tools/icons/a.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='8' height='8'><rect width='8' "
                               "height='8'/></svg>");
    write("tools/a.xml",
          tool("a", "1", "Label='Tool A' Tooltip='Does A' Icon='a.svg' Enabled='whensupported'"));
    write("tools/b.txt", tool("b", "1"));
    QCOMPARE(open(), QStringList());
    QToolButton* shown = button("a");
    QVERIFY(shown && shown->isVisible() && shown->isEnabled());
    QCOMPARE(shown->text(), QStringLiteral("Tool A"));
    QCOMPARE(shown->toolTip(), QStringLiteral("Does A"));
    QVERIFY(!shown->icon().isNull());
    QCOMPARE(shown->toolButtonStyle(), Qt::ToolButtonTextUnderIcon);
    QVERIFY(!button("b"));
    QVERIFY(button("Report.Editor"));
}

void tst_kyworkstation_tools::filesAreLoadedInTheirOrder()
{
    write("tools/2.xml", tool("second", "1"));
    write("tools/1.xml", tool("first", "1"));
    write("third.xml", tool("third", "1"));
    QCOMPARE(open({mProfile->filePath("third.xml")}), QStringList());
    QStringList shown;
    for (const QAction* action : mWindow->findChild<KyToolBarPanel*>()->actions()) {
        if (!action->isSeparator())
            shown.append(action->text());
    }
    QCOMPARE(shown, QStringList({"Report", "first", "second", "third"}));
}

void tst_kyworkstation_tools::badFileIsToldAndTheOthersLoaded()
{
    write("tools/1.xml", "<x>\n</y>");
    write("tools/2.xml", tool("good", "1"));
    QCOMPARE(open({mProfile->filePath("none.xml")}),
             QStringList({"Tool Configuration " + mProfile->filePath("tools/1.xml") +
                              " - PARSE ERROR: Line(2),Column(4): Opening and ending tag mismatch.",
                          "Tool Configuration " + mProfile->filePath("none.xml") + " - READ ERROR:"}));
    QVERIFY(button("good"));
}

void tst_kyworkstation_tools::buttonTriggersTheTool()
{
    write("tools/a.xml", tool("a", "Global.noted = (Global.noted || 0) + 1", "Enabled='whensupported'"));
    open();
    QTest::mouseClick(button("a"), Qt::LeftButton);
    QCOMPARE(noted(), QStringLiteral("1"));
    QTest::mouseClick(button("a"), Qt::LeftButton);
    QCOMPARE(noted(), QStringLiteral("2"));
    QTest::mouseClick(button("a"), Qt::RightButton);
    QCOMPARE(noted(), QStringLiteral("2"));
}

void tst_kyworkstation_tools::shiftAndAClickTakeTheTriggerBack()
{
    write("tools/a.xml", "<x><Tool Id='a' Enabled='whensupported'><OnSet>Global.noted = 'set'</OnSet>"
                         "<OnUnset>Global.noted = 'unset'</OnUnset></Tool></x>");
    open();
    QTest::mouseClick(button("a"), Qt::LeftButton);
    QCOMPARE(noted(), QStringLiteral("set"));
    QTest::mouseClick(button("a"), Qt::LeftButton, Qt::ShiftModifier);
    QCOMPARE(noted(), QStringLiteral("unset"));
    QVERIFY(!button("a")->isDown());
}

void tst_kyworkstation_tools::shiftCountsOnlyAlone()
{
    write("tools/a.xml",
          "<x><Tool Id='a' Enabled='whensupported'><OnSet>Global.noted = 'set'</OnSet>"
          "<OnUnset>Global.noted = 'unset'</OnUnset></Tool>"
          "<Tool Id='b' Enabled='whensupported' Checkable='1'><OnSet>Global.noted = 'set'</OnSet>"
          "<OnUnset>Global.noted = 'unset'</OnUnset></Tool></x>");
    open();
    QTest::mouseClick(button("a"), Qt::LeftButton, Qt::ShiftModifier | Qt::ControlModifier);
    QCOMPARE(noted(), QStringLiteral("set"));
    KyScriptInterface::getInstance("").evaluate("Global.noted = 'before'");
    QTest::mousePress(button("a"), Qt::LeftButton, Qt::ShiftModifier);
    QTest::mouseRelease(button("a"), Qt::LeftButton, Qt::ShiftModifier, QPoint(-20, -20));
    QCOMPARE(noted(), QStringLiteral("before"));
    QTest::mouseClick(button("b"), Qt::LeftButton, Qt::ShiftModifier);
    QCOMPARE(noted(), QStringLiteral("set"));
    QVERIFY(button("b")->isChecked());
}

void tst_kyworkstation_tools::checkableToolIsTurnedOver()
{
    write("tools/a.xml", tool("a", "Global.noted = Orvane.tool('a').checked",
                              "Checkable='true' Label='Start' LabelActive='Stop' Enabled='whensupported'"));
    open();
    QTest::mouseClick(button("a"), Qt::LeftButton);
    QVERIFY(button("a")->isChecked());
    QCOMPARE(noted() + button("a")->text(), QStringLiteral("trueStop"));
    QTest::mouseClick(button("a"), Qt::LeftButton);
    QVERIFY(!button("a")->isChecked());
    QCOMPARE(noted() + button("a")->text(), QStringLiteral("falseStart"));
    KyScriptInterface::getInstance("").evaluate("Orvane.tool('a').checked = true");
    QVERIFY(button("a")->isChecked());
}

void tst_kyworkstation_tools::buttonFollowsTheScript()
{
    write("tools/a.xml", tool("a",
                              "Orvane.setToolText('a', 'new tip', 'new label');"
                              "Orvane.setToolIcon('a', 'report.svg')",
                              "Enabled='whensupported'"));
    open();
    QCOMPARE(button("a")->toolButtonStyle(), Qt::ToolButtonTextOnly);
    QTest::mouseClick(button("a"), Qt::LeftButton);
    QCOMPARE(button("a")->text(), QStringLiteral("new label"));
    QCOMPARE(button("a")->toolTip(), QStringLiteral("new tip"));
    QVERIFY(!button("a")->icon().isNull());
    QCOMPARE(button("a")->toolButtonStyle(), Qt::ToolButtonTextUnderIcon);
}

void tst_kyworkstation_tools::buttonFollowsTheActiveViewer()
{
    write("tools/a.xml", tool("a", "Global.noted = 'ran'"));
    open();
    QVERIFY(!button("a")->isEnabled());
    QTest::mouseClick(button("a"), Qt::LeftButton);
    QCOMPARE(noted(), QStringLiteral("undefined"));
    RnHandle<KyBaseViewer> viewer(new ImageViewer);
    KyViewerManager::getInstance()->setActiveViewer(viewer.get());
    QVERIFY(button("a")->isEnabled());
    QTest::mouseClick(button("a"), Qt::LeftButton);
    QCOMPARE(noted(), QStringLiteral("ran"));
    viewer.reset();
    QVERIFY(!button("a")->isEnabled());
}

void tst_kyworkstation_tools::newestToolOfAKeyIsShown()
{
    write("tools/1.xml", tool("a", "Global.noted = 1", "Label='old' Enabled='whensupported'"));
    write("tools/2.xml", tool("a", "Global.noted = 2", "Label='new' Enabled='whensupported'"));
    open();
    QCOMPARE(mWindow->findChildren<QToolButton*>("tool.a").size(), 1);
    QCOMPARE(button("a")->text(), QStringLiteral("new"));
    QTest::mouseClick(button("a"), Qt::LeftButton);
    QCOMPARE(noted(), QStringLiteral("2"));
}

void tst_kyworkstation_tools::groupsAreApart()
{
    const auto make = [](const char* inKey, const char* inGroup) {
        return KyCommandTool::make(inKey, {inGroup, "", inKey, "", ""}, KyCommandTool::Kind::Command,
                                   [](bool) { return true; });
    };
    const auto a = make("a", "1"), b = make("b", "1"), c = make("c", "2");
    KyToolBarPanel bar(nullptr);
    bar.showTools();
    QStringList shown;
    for (const QAction* action : bar.actions())
        shown.append(action->isSeparator() ? QStringLiteral("|") : action->text());
    QCOMPARE(shown, QStringList({"a", "b", "|", "c"}));
}

void tst_kyworkstation_tools::toolBarIsBounded()
{
    QByteArray xml = "<x>";
    for (int i = 0; i < 10000; ++i)
        xml += "<Tool Id='t" + QByteArray::number(i) + "'><OnSet>1</OnSet></Tool>";
    write("tools/many.xml", xml + "</x>");
    LogCapture log(2);
    open();
    QCOMPARE(mWindow->findChild<KyToolBarPanel*>()->findChildren<KyActionUI*>().size(), 200);
    QCOMPARE(log.take(), QStringList("2|Tools|The tool bar shows 200 of 10001 tools"));
}

void tst_kyworkstation_tools::toolsMayBeShownAnew()
{
    write("tools/a.xml", tool("a", "1"));
    open();
    QCOMPARE(mTools->load(mProfile->path(), {}), QStringList());
    QTRY_COMPARE(mWindow->findChildren<QToolButton*>("tool.a").size(), 1);
    QCOMPARE(KyToolRegistry::getToolByDecorationKey<KyTool>("a", true)->getUIs().size(), std::size_t(1));
}

void tst_kyworkstation_tools::hotKeyTriggersTheTool()
{
    int triggered = 0;
    const auto made =
        KyCommandTool::make("keyed", {"", "", "Keyed", "", "Ctrl+Alt+K"}, KyCommandTool::Kind::Command,
                            [&](bool) { return ++triggered > 0; });
    open();
    mWindow->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(mWindow.get()));
    QTest::keyClick(mWindow.get(), Qt::Key_K, Qt::ControlModifier | Qt::AltModifier);
    QCOMPARE(triggered, 1);
}

void tst_kyworkstation_tools::userGivesToolsTheirKeys()
{
    OvPropertyPool::instance()
        ->variant(KyToolKeys::PropertyId)
        ->setValueFromQString("a=Ctrl+Alt+K, b = Ctrl+Alt+=");
    write("tools/a.xml", tool("a", "Global.noted = 'a'", "Enabled='whensupported'"));
    write("tools/b.xml", tool("b", "1"));
    LogCapture log(2);
    open();
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(KyToolRegistry::getToolByDecorationKey<KyTool>("b", true)->hotKey(), std::string("Ctrl+Alt+="));
    mWindow->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(mWindow.get()));
    QTest::keyClick(mWindow.get(), Qt::Key_K, Qt::ControlModifier | Qt::AltModifier);
    QCOMPARE(noted(), QStringLiteral("a"));
}

void tst_kyworkstation_tools::badKeysAreToldInTheLog_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("problem");
    QTest::newRow("no sign") << "a"
                             << "it is not ID=KEYS";
    QTest::newRow("unknown tool") << "none=Ctrl+K"
                                  << "there is no such tool";
    QTest::newRow("unknown keys") << "a=Ctrl+Nonsense"
                                  << "there are no such keys";
}

void tst_kyworkstation_tools::badKeysAreToldInTheLog()
{
    QFETCH(QString, entry);
    QFETCH(QString, problem);
    OvPropertyPool::instance()->variant(KyToolKeys::PropertyId)->setValueFromQString(entry);
    write("tools/a.xml", tool("a", "1"));
    LogCapture log(2);
    open();
    QCOMPARE(log.take(), QStringList("2|Tools|Keys of tools: \"" + entry + "\" is left out: " + problem));
}

void tst_kyworkstation_tools::toolBarHasItsMenuEntryAndItsPlace()
{
    open();
    auto* bar = mWindow->findChild<KyToolBarPanel*>();
    QVERIFY(bar->isVisible());
    QVERIFY(mWindow->findChild<QMenu*>("viewMenu")->actions().contains(bar->toggleViewAction()));
    mWindow->addToolBar(Qt::LeftToolBarArea, bar);
    open();
    QCOMPARE(mWindow->toolBarArea(mWindow->findChild<KyToolBarPanel*>()), Qt::LeftToolBarArea);
}

void tst_kyworkstation_tools::failingToolLeavesTheWindowAlone()
{
    write("tools/a.xml", tool("a", "throw new Error('x')", "Enabled='whensupported'"));
    open();
    LogCapture log(3);
    QTest::mouseClick(button("a"), Qt::LeftButton);
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(button("a")->isEnabled());
}

void tst_kyworkstation_tools::reportIsClosedAtFirst()
{
    open();
    QVERIFY(!mWindow->findChild<QDockWidget*>("reportDock")->isVisible());
    QVERIFY(!button("Report.Editor")->isChecked());
    QTest::mouseClick(button("Report.Editor"), Qt::LeftButton);
    open();
    QVERIFY(mWindow->findChild<QDockWidget*>("reportDock")->isVisible());
    QVERIFY(button("Report.Editor")->isChecked());
}

void tst_kyworkstation_tools::reportIsOpenedByItsTool()
{
    open();
    auto* dock = mWindow->findChild<QDockWidget*>("reportDock");
    QTest::mouseClick(button("Report.Editor"), Qt::LeftButton);
    QVERIFY(dock->isVisible() && button("Report.Editor")->isChecked());
    dock->close();
    QVERIFY(!button("Report.Editor")->isChecked());
    dock->toggleViewAction()->trigger();
    QVERIFY(dock->isVisible() && button("Report.Editor")->isChecked());
    QTest::mouseClick(button("Report.Editor"), Qt::LeftButton);
    QVERIFY(!dock->isVisible());
}

void tst_kyworkstation_tools::reportIsOpenedByAScript()
{
    open();
    KyScriptInterface::getInstance("").evaluate("Orvane.editor('Report').open()");
    QVERIFY(mWindow->findChild<QDockWidget*>("reportDock")->isVisible());
    QVERIFY(KyEditor::editor("Report", true));
}

void tst_kyworkstation_tools::reportIsWrittenByTheUserAndByScripts()
{
    open();
    KyEditor::editor("Report", true);
    auto* text = mWindow->findChild<QTextEdit*>("reportText");
    QTest::keyClicks(text, "by hand");
    KyScriptInterface& engine = KyScriptInterface::getInstance("");
    QCOMPARE(engine.evaluate("var r = Orvane.editor('Report'); r.text").toString(),
             QStringLiteral("by hand"));
    engine.evaluate("r.append(', by script')");
    QCOMPARE(text->toPlainText(), QStringLiteral("by hand, by script"));
}

void tst_kyworkstation_tools::formatsOfTheReport_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("html");
    QTest::newRow("bold") << "B"
                          << "font-weight:700";
    QTest::newRow("italic") << "I"
                            << "font-style:italic";
    QTest::newRow("underlined") << "U"
                                << "text-decoration: underline";
}

void tst_kyworkstation_tools::formatsOfTheReport()
{
    QFETCH(QString, button);
    QFETCH(QString, html);
    open();
    KyEditor::editor("Report", true);
    auto* text = mWindow->findChild<QTextEdit*>("reportText");
    QToolButton* format = nullptr;
    for (QToolButton* each : mWindow->findChild<QDockWidget*>("reportDock")->findChildren<QToolButton*>())
        format = each->text() == button ? each : format;
    QVERIFY(format);
    QTest::mouseClick(format, Qt::LeftButton);
    QTest::keyClicks(text, "x");
    QVERIFY2(text->toHtml().contains(html), qPrintable(text->toHtml()));
    QVERIFY(format->isChecked());
    QTest::mouseClick(format, Qt::LeftButton);
    QTest::keyClicks(text, "y");
    QVERIFY(!format->isChecked());
    text->moveCursor(QTextCursor::Start);
    text->moveCursor(QTextCursor::Right);
    QVERIFY(format->isChecked());
}

void tst_kyworkstation_tools::reportEndsWithTheWorkOnThePatient_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::newRow("studies closed") << KyNotification::SessionClosed << "";
    QTest::newRow("other patient") << KyNotification::PatientChanged << "";
    QTest::newRow("something else") << KyNotification::PropertyChanged << "about Doe";
}

void tst_kyworkstation_tools::reportEndsWithTheWorkOnThePatient()
{
    QFETCH(int, code);
    QFETCH(QString, text);
    QTextDocument& report = mPlatform->reportEditor().document();
    report.setPlainText("about Doe");
    KyNotifiable::notify(KyNotification(code));
    QCOMPARE(report.toPlainText(), text);
    report.undo();
    QCOMPARE(report.toPlainText(), QStringLiteral("about Doe"));
}

void tst_kyworkstation_tools::editorOutlivesTheWindow()
{
    open();
    close();
    KyScriptInterface& engine = KyScriptInterface::getInstance("");
    QCOMPARE(engine.evaluate("var r = Orvane.editor('Report'); r.text = 'kept'; r.open(); r.text").toString(),
             QStringLiteral("kept"));
    open();
    QCOMPARE(mWindow->findChild<QTextEdit*>("reportText")->toPlainText(), QStringLiteral("kept"));
    close();
    mPlatform.reset();
    QCOMPARE(engine.evaluate("r.append('x'); r.html + r.text + r.replace('x', 'y') + Orvane.editor('Report')")
                 .toString(),
             QStringLiteral("0null"));
    init();
}

namespace {

QString inReport(const QString& inCall)
{
    return KyScriptInterface::getInstance("")
        .evaluate("var own = new RichEditCtrl({ windowClassName: 'OvReportEditor' }); String(own." + inCall +
                  ")")
        .toString();
}

} // namespace

void tst_kyworkstation_tools::openReportIsTheOneOnView()
{
    open();
    QCOMPARE(inReport("isReadable()"), QStringLiteral("false"));
    auto* dock = mWindow->findChild<QDockWidget*>("reportDock");
    QTest::mouseClick(button("Report.Editor"), Qt::LeftButton);
    QCOMPARE(inReport("isValid()"), QStringLiteral("true"));
    dock->close();
    QCOMPARE(inReport("isReadable()"), QStringLiteral("false"));
    dock->toggleViewAction()->trigger();
    QCOMPARE(inReport("isValid()"), QStringLiteral("true"));
    open();
    QCOMPARE(inReport("isValid()"), QStringLiteral("true"));
    close();
    QCOMPARE(inReport("isReadable()"), QStringLiteral("false"));
}

/// Read back from the widget that the user sees.
void tst_kyworkstation_tools::templateIsFilledByAScript()
{
    open();
    KyEditor::editor("Report", true);
    auto* text = mWindow->findChild<QTextEdit*>("reportText");
    text->setHtml("Patient: <b>[NAME]</b><br>Findings:");
    inReport("replace('[NAME]', 'Doe, Jane')");
    inReport("insertAfter('Findings:', ' none')");
    QCOMPARE(text->toPlainText(), QStringLiteral("Patient: Doe, Jane\nFindings: none"));
    QVERIFY2(text->toHtml().contains(QRegularExpression("font-weight:700[^>]*>Doe, Jane<")),
             qPrintable(text->toHtml()));
}

QToolButton* tst_kyworkstation_tools::reportButton(const QString& inText)
{
    for (QToolButton* each : mWindow->findChild<QDockWidget*>("reportDock")->findChildren<QToolButton*>()) {
        if (each->text() == inText)
            return each;
    }
    qFatal("no button %s", qPrintable(inText));
}

void tst_kyworkstation_tools::readOnlyReportIsNotWritten()
{
    open();
    KyEditor::editor("Report", true);
    auto* text = mWindow->findChild<QTextEdit*>("reportText");
    QTest::keyClicks(text, "by hand");
    reportButton("Read Only")->click();
    QTest::keyClicks(text, "x");
    inReport("replaceSelection('x')");
    QCOMPARE(inReport("isValid()") + inReport("isReadable()"), QStringLiteral("falsetrue"));
    QCOMPARE(text->toPlainText(), QStringLiteral("by hand"));
    QVERIFY(!reportButton("B")->isEnabled() && !reportButton("Undo")->isEnabled());
    reportButton("Read Only")->click();
    inReport("replaceSelection(', by script')");
    QCOMPARE(text->toPlainText(), QStringLiteral("by hand, by script"));
    QVERIFY(reportButton("B")->isEnabled() && reportButton("Undo")->isEnabled());
}

void tst_kyworkstation_tools::changesOfTheReportAreTakenBack()
{
    open();
    KyEditor::editor("Report", true);
    auto* text = mWindow->findChild<QTextEdit*>("reportText");
    QVERIFY(!reportButton("Undo")->isEnabled() && !reportButton("Redo")->isEnabled());
    inReport("replaceSelection('one')");
    reportButton("Undo")->click();
    QCOMPARE(text->toPlainText(), QString());
    QVERIFY(!reportButton("Undo")->isEnabled());
    reportButton("Redo")->click();
    QCOMPARE(text->toPlainText(), QStringLiteral("one"));
    QVERIFY(!reportButton("Redo")->isEnabled());
}

/// The example opens the report; a report that can only be read stays as it is.
void tst_kyworkstation_tools::templateIsInsertedByItsTool()
{
    open({TOOLS "/insert-template.xml"});
    auto* text = mWindow->findChild<QTextEdit*>("reportText");
    QTest::mouseClick(button("Site.InsertTemplate"), Qt::LeftButton);
    QCOMPARE(text->toPlainText(), QStringLiteral("Findings: Normal."));
    QVERIFY(mWindow->findChild<QDockWidget*>("reportDock")->isVisible());
    reportButton("Read Only")->click();
    QTest::mouseClick(button("Site.InsertTemplate"), Qt::LeftButton);
    QCOMPARE(text->toPlainText(), QStringLiteral("Findings: Normal."));
    QCOMPARE(button("Site.InsertTemplate")->toolTip(), QStringLiteral("The report can only be read"));
}

/// Once for each change of somebody else.
void tst_kyworkstation_tools::handlerOfTheReportMayWrite()
{
    open();
    KyEditor::editor("Report", true);
    auto* text = mWindow->findChild<QTextEdit*>("reportText");
    KyScriptInterface& engine = KyScriptInterface::getInstance("");
    engine.evaluate("var writing = function () {"
                    "    new RichEditCtrl({ windowClassName: 'OvReportEditor' }).replaceSelection('!'); };"
                    "Orvane.editor('Report').textChanged.connect(writing)");
    inReport("replaceSelection('x')");
    QTest::keyClicks(text, "y");
    engine.evaluate("Orvane.editor('Report').textChanged.disconnect(writing)");
    QCOMPARE(text->toPlainText().count('!'), 2);
    QCOMPARE(text->toPlainText().remove('!'), QStringLiteral("xy"));
}

void tst_kyworkstation_tools::commandLineNamesToolFiles()
{
    KyWorkstationOptions options;
    QString text;
    QCOMPARE(options.parse({"kyworkstation", "--tools", "a.xml", "--tools", "b.xml"}, text),
             KyWorkstationOptions::Outcome::Run);
    QCOMPARE(options.host.toolFiles, QStringList({"a.xml", "b.xml"}));
}

KY_TEST_MAIN(tst_kyworkstation_tools)
#include "tst_kyworkstation_tools.moc"
