#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/ModalAnswer.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptFileDialog.h>

#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTranslator>

#include <memory>

class tst_KyScriptFileDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void scriptsMakeTheirOwn();

    void dialogProposesAFileInTheDownloads();
    void dialogIsCaptionedInTheUsersLanguage();
    void acceptedPathIsTheResult_data();
    void acceptedPathIsTheResult();
    void cancelledDialogGivesAnEmptyText();
    void filterIsOptionalInEffect_data();
    void filterIsOptionalInEffect();
    void dialogStandsAboveTheMainWindow();
    void dialogEndsWithTheMainWindow();
    void applicationGoesOnMeanwhile();
    void objectMayGoWhileItsDialogIsOpen();
    void chosenFileCanBeWritten();

private:
    QString text(const QString& inSource) { return mEngine->evaluate(inSource).toString(); }
    QString download(const QString& inName) const { return mHome->filePath("Downloads/" + inName); }
    static QFileDialog* asDialog(QWidget* inWindow) { return qobject_cast<QFileDialog*>(inWindow); }

    std::unique_ptr<QTemporaryDir> mHome;
    QByteArray mHomeBefore;
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
};

void tst_KyScriptFileDialog::init()
{
    mHome = std::make_unique<QTemporaryDir>();
    QVERIFY(mHome->isValid());
    QVERIFY(QDir(mHome->path()).mkdir("Downloads"));
    mHomeBefore = qgetenv("HOME");
    qputenv("HOME", mHome->path().toUtf8());
    qunsetenv("XDG_CONFIG_HOME");
    QCOMPARE(QStandardPaths::writableLocation(QStandardPaths::DownloadLocation),
             mHome->filePath("Downloads"));
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptFileDialog | ScriptFileWriter);
}

void tst_KyScriptFileDialog::cleanup()
{
    const QString broken = mContracts->verify();
    mEngine.reset();
    mContracts.reset();
    mPlatform.reset();
    qputenv("HOME", mHomeBefore);
    mHome.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
    QVERIFY(!QApplication::activeModalWidget());
}

void tst_KyScriptFileDialog::scriptsMakeTheirOwn()
{
    QCOMPARE(KyScriptFileDialog::staticMetaObject.constructorCount(), 2); // with and without a parent
    QCOMPARE(text("var a = new FileDialog(), b = new FileDialog(a); a !== b && typeof b"),
             QStringLiteral("object"));
    text("a.destroy()"); // and with it what belongs to it
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(text("Object.keys(b).length"), QStringLiteral("0"));
}

void tst_KyScriptFileDialog::dialogProposesAFileInTheDownloads()
{
    const LogCapture log;
    ModalAnswer answer([&](QWidget* inWindow) {
        auto* dialog = asDialog(inWindow);
        QVERIFY(dialog);
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Save as..."));
        QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptSave);
        QCOMPARE(dialog->fileMode(), QFileDialog::AnyFile);
        QCOMPARE(dialog->nameFilters(), QStringList({"Tables (*.csv)", "All (*)"}));
        QCOMPARE(dialog->selectedFiles(), QStringList(download("studies.csv")));
        QCOMPARE(dialog->options(), QFileDialog::Options());
        QVERIFY(!dialog->parentWidget());
        dialog->reject();
    });
    QCOMPARE(text("new FileDialog().getSaveFileName('studies.csv', 'Tables (*.csv);;All (*)')"), QString());
    QVERIFY(answer.happened());
    QCOMPARE(log.toStrings(), QStringList());
}

/// Translates what the dialog is called, by its source text.
class Translator : public QTranslator
{
public:
    QString translate(const char* inContext, const char* inText, const char*, int) const override
    {
        return qstrcmp(inContext, "KyScriptFileDialog") == 0 && qstrcmp(inText, "Save as...") == 0
                   ? QStringLiteral("Speichern unter...")
                   : QString();
    }
    bool isEmpty() const override { return false; }
};

void tst_KyScriptFileDialog::dialogIsCaptionedInTheUsersLanguage()
{
    Translator translator;
    QCoreApplication::installTranslator(&translator);
    ModalAnswer answer([&](QWidget* inWindow) {
        QCOMPARE(inWindow->windowTitle(), QStringLiteral("Speichern unter..."));
        asDialog(inWindow)->reject();
    });
    text("new FileDialog().getSaveFileName('a', '')");
    QCoreApplication::removeTranslator(&translator);
}

void tst_KyScriptFileDialog::acceptedPathIsTheResult_data()
{
    QTest::addColumn<QString>("proposed");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("result");
    QTest::newRow("as proposed") << "a.csv"
                                 << ""
                                 << "a.csv";
    QTest::newRow("typed") << "a.csv"
                           << "b.csv"
                           << "b.csv";
    QTest::newRow("no proposal") << ""
                                 << "b.csv"
                                 << "b.csv";
    QTest::newRow("letters of all scripts, blanks")
        << QString::fromUtf8("größe 東京.csv") << "" << QString::fromUtf8("größe 東京.csv");
}

void tst_KyScriptFileDialog::acceptedPathIsTheResult()
{
    QFETCH(QString, proposed);
    QFETCH(QString, typed);
    QFETCH(QString, result);
    ModalAnswer answer([&](QWidget* inWindow) {
        if (!typed.isEmpty())
            inWindow->findChild<QLineEdit*>("fileNameEdit")->setText(typed);
        ModalAnswer::clicking("Save")(inWindow);
    });
    mEngine->globalObject().setProperty("proposed", proposed);
    QCOMPARE(text("new FileDialog().getSaveFileName(proposed, '')"), download(result));
    QVERIFY(!QFile::exists(download(result)));
}

void tst_KyScriptFileDialog::cancelledDialogGivesAnEmptyText()
{
    ModalAnswer answer(ModalAnswer::clicking("Cancel"));
    QCOMPARE(text("typeof new FileDialog().getSaveFileName('a', '')"), QStringLiteral("string"));
    ModalAnswer second([](QWidget* inWindow) { inWindow->close(); });
    QCOMPARE(text("new FileDialog().getSaveFileName('a', '')"), QString());
}

void tst_KyScriptFileDialog::filterIsOptionalInEffect_data()
{
    QTest::addColumn<QString>("filter");
    QTest::newRow("empty") << "''";
    QTest::newRow("null") << "null";
    QTest::newRow("undefined") << "undefined";
}

void tst_KyScriptFileDialog::filterIsOptionalInEffect()
{
    QFETCH(QString, filter);
    ModalAnswer answer([&](QWidget* inWindow) {
        QCOMPARE(asDialog(inWindow)->nameFilters(), QStringList("All Files (*)"));
        asDialog(inWindow)->reject();
    });
    text("new FileDialog().getSaveFileName('a', " + filter + ")");
    QVERIFY(answer.happened());
}

void tst_KyScriptFileDialog::dialogStandsAboveTheMainWindow()
{
    QWidget window;
    mPlatform->monitors.setMainWindow(&window);
    ModalAnswer answer([&](QWidget* inWindow) {
        QCOMPARE(inWindow->parentWidget(), &window);
        asDialog(inWindow)->reject();
    });
    text("new FileDialog().getSaveFileName('a', '')");
    QVERIFY(answer.happened());
}

void tst_KyScriptFileDialog::dialogEndsWithTheMainWindow()
{
    auto window = std::make_unique<QWidget>();
    mPlatform->monitors.setMainWindow(window.get());
    ModalAnswer answer([&](QWidget*) { window.reset(); });
    QCOMPARE(text("'<' + new FileDialog().getSaveFileName('a', '') + '>'"), QStringLiteral("<>"));
}

void tst_KyScriptFileDialog::applicationGoesOnMeanwhile()
{
    ModalAnswer answer([&](QWidget* inWindow) {
        QCOMPARE(text("step + 1"), QStringLiteral("2"));
        asDialog(inWindow)->reject();
    });
    QCOMPARE(text("step = 1; new FileDialog().getSaveFileName('a', ''); step = 2"), QStringLiteral("2"));
}

void tst_KyScriptFileDialog::objectMayGoWhileItsDialogIsOpen()
{
    ModalAnswer answer([&](QWidget* inWindow) {
        text("d.destroy(); d = null; collectGarbage()");
        QTest::qWait(20);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(inWindow->isVisible());
        ModalAnswer::clicking("Save")(inWindow);
    });
    QCOMPARE(text("d = new FileDialog(); d.getSaveFileName('a', '')"), download("a"));
}

void tst_KyScriptFileDialog::chosenFileCanBeWritten()
{
    ModalAnswer answer(ModalAnswer::clicking("Save"));
    QCOMPARE(text("new FileWriter().saveFile(new FileDialog().getSaveFileName('a.csv', ''), 'content')"),
             QStringLiteral("true"));
    QCOMPARE(QFileInfo(download("a.csv")).size(), 7);
}

KY_TEST_MAIN(tst_KyScriptFileDialog)

#include "tst_KyScriptFileDialog.moc"
