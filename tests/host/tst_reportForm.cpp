// A form in a browser that fills the report through a script: the example, as a user meets it.

#include <support/KyTest.h>
#include <support/VirtualDisplay.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>

#include <unistd.h>

class tst_reportForm : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void formFillsTheReport_data();
    void formFillsTheReport();

private:
    VirtualDisplay mDisplay;
    QTemporaryDir mFolder;
};

namespace {

constexpr int Patience = 60'000;

/// Tells by files what can be seen in the application.
constexpr const char* Watch = R"js(
    function write(name, text) { new FileWriter().saveFile(name, text); }
    formSocket.messageReceived.connect(function (text) { if (JSON.parse(text).ready) write("%1/ready", "yes"); });
    var report = Orvane.editor("Report");
    report.textChanged.connect(function () { write("%1/report", report.text); });
)js";

QString content(const QString& inPath)
{
    QFile file(inPath);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

void tst_reportForm::initTestCase()
{
#ifndef KY_HAS_WEBENGINE
    QSKIP("built without Qt WebEngine; scripts/setup --tests installs it");
#endif
    const QString missing = VirtualDisplay::missingPrograms();
    if (!missing.isEmpty())
        QSKIP(qPrintable("not installed: " + missing));
    QVERIFY(mDisplay.start());
    QCOMPARE(QProcess::execute(KYSAMPLE, {mFolder.filePath("sample")}), 0);
}

void tst_reportForm::formFillsTheReport_data()
{
    QTest::addColumn<QString>("type");
    QTest::newRow("in a window of the application") << "WebView";
    QTest::newRow("in the browser program") << "OvBrowser";
}

void tst_reportForm::formFillsTheReport()
{
    QFETCH(QString, type);
    const QTemporaryDir folder;
    QFile watch(folder.filePath("watch.js"));
    QVERIFY(watch.open(QIODevice::WriteOnly));
    watch.write(QString(Watch).arg(folder.path()).toUtf8());
    watch.close();

    QProcess program;
    QProcessEnvironment environment = mDisplay.environment();
    environment.insert("QTWEBENGINE_DISABLE_SANDBOX", "1");
    environment.insert("ASAN_OPTIONS", "detect_leaks=0"); // the engine keeps things to its end
    environment.insert("XDG_DATA_HOME", folder.filePath("data"));
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::ForwardedChannels);
    program.setChildProcessModifier([] { ::setpgid(0, 0); });
    program.start(KYWORKSTATION, {"--profile", folder.filePath("profile"), "--property",
                                  "AdvancedSettings.BrowserCtrlType=" + type, "--studies",
                                  mFolder.filePath("sample"), "--run", FORM, "--run", watch.fileName()});
    QVERIFY(program.waitForStarted());
    const qint64 group = program.processId();

    QTRY_VERIFY_WITH_TIMEOUT(!mDisplay.window("Report form").isEmpty(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(content(folder.filePath("ready")), QString("yes"), Patience);
    // A window gets another number when the engine chooses how to draw in it.
    QTRY_VERIFY_WITH_TIMEOUT(mDisplay.activate(mDisplay.window("Report form")), Patience);
    mDisplay.type("No focal lesion.");
    mDisplay.press({"Tab", "Down", "Tab", "space", "Tab", "Tab", "Return"});
    QTRY_COMPARE_WITH_TIMEOUT(content(folder.filePath("report")),
                              QString("Findings: No focal lesion.\nLungs: Infiltrate, right\n"
                                      "Pleural effusion: yes\nPneumothorax: no"),
                              Patience);

    // The end of the workstation is that of the browser and of all that it has started.
    QVERIFY(mDisplay.activate(mDisplay.window("Ky Workstation")));
    mDisplay.press({"ctrl+q"});
    QVERIFY(program.waitForFinished(Patience));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(::kill(-pid_t(group), 0) != 0, Patience);
}

KY_TEST_MAIN(tst_reportForm)
#include "tst_reportForm.moc"
