// The workstation's window driven by real events, and the program as a process.

#include <support/KyTest.h>
#include <support/ModalAnswer.h>

#include <common/KyHostPlatform.h>
#include <kyscript/KyScriptInterface.h>
#include <kyworkstation/KyLogModel.h>
#include <kyworkstation/KyLogPane.h>
#include <kyworkstation/KyMainWindow.h>
#include <kyworkstation/KyScriptOutputPane.h>
#include <kyworkstation/KyScriptingMenu.h>
#include <kyworkstation/KyStudyFolders.h>
#include <kyworkstation/KyStudyListModel.h>
#include <kyworkstation/KyStudySession.h>
#include <kyworkstation/KyTranslations.h>
#include <kyworkstation/KyWorkstationOptions.h>

#include <ovbase/OvEnum.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvTranslationProperty.h>
#include <ovwebservice/FolderStudySource.h>
#include <rnlib/RnLogFile.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDirIterator>
#include <QDockWidget>
#include <QDropEvent>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QSemaphore>
#include <QSpinBox>
#include <QSplitter>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextEdit>
#include <QThread>
#include <QToolButton>
#include <QTreeView>
#include <QTreeWidget>

#include <functional>
#include <memory>
#include <optional>
#include <thread>

class tst_kyworkstation : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void folderFillsTheStudyList();
    void folderIsOpenedByTheMenu();
    void additionalFolderIsOpenedByTheMenu();
    void folderIsOpenedByDrop();
    void fileStandsForItsFolder();
    void droppedFileStandsForItsFolder();
    void dropOfOtherThingsIsRefused();
    void windowRespondsWhileStudiesAreRead();
    void foldersAreReadOneAfterTheOther();
    void progressGoesUpToTheNumberOfFiles();
    void progressIsShownOnTheWay();
    void loadingIsCancelledByItsButton();
    void loadingIsCancelledInItsMidst_data();
    void loadingIsCancelledInItsMidst();
    void windowCanEndWhileStudiesAreRead();
    void failedFolderIsToldAlsoBehindOthers();
    void studyThatIsOpenedAgainStandsOnce();
    void studyChangesItsList();
    void missingFolderIsTold();
    void folderWithoutStudiesIsTold();
    void skippedFilesAreCounted();
    void allStudiesAreClosedByTheMenu();
    void studiesAreSortedByTheirValues();
    void emptyListSaysHowToFillIt();

    void consoleOpensByItsMenuAndEvaluates();
    void consolesOfTwoEnginesAreApart();
    void closedConsoleOpensAgain();
    void newConsoleAsksForAName();
    void cancelledNewConsoleChangesNothing();

    void scriptRunsAndPrints();
    void scriptPrintsHereAlsoWhenAConsoleWasOpened();
    void scriptOutputKeepsTheNewestLines();
    void scriptOutputKeepsTheNewestCharacters();
    void scriptOutputIsCleared();
    void failingScriptIsTold();
    void unreadableScriptIsTold_data();
    void unreadableScriptIsTold();
    void scriptIsChosenByTheMenu();
    void recentScriptsRunAgain();
    void recentScriptsAreBounded();

    void logShowsLinesOfAllThreads();
    void logIsFilteredByLevel();
    void logIsSearched();
    void logIsBounded();
    void logIsCopiedAndCleared();

    void settingsShowEveryPropertyUnderItsLabels();
    void settingIsChangedByItsCheckBox();
    void settingIsChangedByItsSpinBox();
    void settingIsChosenFromTheValuesOfItsEnumeration();
    void wheelChangesOnlyTheSettingInUse();
    void settingIsResetToItsDefault();
    void unreadableSettingIsTakenBack();
    void settingsFollowChangesFromElsewhere();
    void settingsAreSearched();

    void panelIsAddedAsATabWithItsMenuEntry();
    void panelStandsWhereItWasPut();
    void viewerAreaStandsBelowTheStudyList();
    void viewerAreaKeepsItsHeight();

    void placesAndSettingsAreKeptBetweenStarts();
    void closingTheWindowClosesTheConsoles();
    void menusOpenByTheMouse();
    void menusOpenByTheirKeys();
    void consoleOpensByItsKey();
    void everyActionHasAKey();
    void everyFieldHasAnAccessibleName();

    void windowSpeaksTheLanguageOfTheUser();
    void firstLanguageOfTheUserCounts_data();
    void firstLanguageOfTheUserCounts();

    void commandLineIsRead_data();
    void commandLineIsRead();
    void badCommandLineIsTold_data();
    void badCommandLineIsTold();
    void programShowsHelpAndVersion();
    void programRefusesABadCommandLine_data();
    void programRefusesABadCommandLine();
    void programStartsAndReadsStudies();

private:
    void start();
    void stop();
    QTreeView& studyList() { return *mWindow->findChild<QTreeView*>("studyList"); }
    QString cell(int inRow, int inColumn);
    void waitForStudies(int inCount);
    void readWith(const std::function<void(int)>& inBeforeProgress);
    QString message() { return mWindow->findChild<QLabel*>("loadResult")->text(); }
    QString scriptOutput() { return mWindow->findChild<QTextEdit*>("scriptOutputText")->toPlainText(); }
    /// The action of the menus whose text, without mnemonics, is this.
    QAction& action(const QString& inText);
    QWidget& console(const QString& inName);
    QString evaluate(QWidget& ioConsole, const QString& inSource);
    QTreeView& logView() { return *mWindow->findChild<QTreeView*>("logView"); }
    QTreeWidget& settings();
    QTreeWidgetItem* setting(const QString& inLabel);
    /// A folder that takes a while to read, made if need be.
    QString manyFiles();
    QString write(const QString& inName, const QByteArray& inText);

    QTemporaryDir mFolder;
    QString mSample;
    std::unique_ptr<QTemporaryDir> mProfile;
    std::unique_ptr<KyHostPlatform> mPlatform;
    std::unique_ptr<KyMainWindow> mWindow;
};

namespace {

constexpr int sSampleStudies = 3;
constexpr int sSampleImages = 80;
constexpr int sManyFiles = 2000;

QWidget* windowTitled(const QString& inTitle)
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->windowTitle() == inTitle)
            return window;
    }
    return nullptr;
}

QString plain(QString inText)
{
    return inText.remove('&').remove(QStringLiteral("…"));
}

/// The answer to a file dialog: takes \a inPath.
ModalAnswer::Answer choosing(const QString& inPath)
{
    return [inPath](QWidget* window) {
        auto* dialog = qobject_cast<QFileDialog*>(window);
        QVERIFY(dialog);
        dialog->selectFile(inPath);
        auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
        name->setText(inPath);
        QMetaObject::invokeMethod(dialog, "accept");
    };
}

/// An enumeration as modules register theirs.
class Speed final : public OvEnum
{
public:
    Speed()
        : OvEnum("Speed")
    {}
};

class SpeedValue final : public OvEnumValue
{
public:
    SpeedValue(int inNumber, const char* inKey, const QString& inLabel)
        : mNumber(inNumber)
        , mKey(inKey)
        , mLabel(inLabel)
    {}
    int value() const override { return mNumber; }
    const char* key() const override { return mKey; }
    QString label() const override { return mLabel; }
    std::unique_ptr<OvEnumValue> clone() const override { return std::make_unique<SpeedValue>(*this); }

private:
    const int mNumber;
    const char* const mKey;
    const QString mLabel;
};

struct Finished
{
    int status;
    QString out;
    QString err;
};

Finished runProgram(const QStringList& inArguments)
{
    QProcess process;
    process.start(KYWORKSTATION, inArguments);
    if (!process.waitForFinished(20'000))
        return {-1, QString(), process.errorString()};
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace

void tst_kyworkstation::initTestCase()
{
    QVERIFY(mFolder.isValid());
    mSample = mFolder.filePath("sample");
    QCOMPARE(QProcess::execute(KYSAMPLE, {mSample}), 0);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    KyScriptingMenu::registerProperties();
}

void tst_kyworkstation::init()
{
    mProfile = std::make_unique<QTemporaryDir>();
    start();
}

void tst_kyworkstation::cleanup()
{
    stop();
    mProfile.reset();
}

void tst_kyworkstation::start()
{
    KyHostOptions options;
    options.profile = mProfile->path();
    mPlatform = std::make_unique<KyHostPlatform>(options);
    mWindow = std::make_unique<KyMainWindow>();
    mWindow->show();
    QVERIFY(QTest::qWaitForWindowExposed(mWindow.get()));
}

void tst_kyworkstation::stop()
{
    mWindow->close();
    mWindow.reset();
    mPlatform.reset();
}

QString tst_kyworkstation::write(const QString& inName, const QByteArray& inText)
{
    QFile file(mFolder.filePath(inName));
    if (!file.open(QIODevice::WriteOnly) || file.write(inText) != inText.size())
        qFatal("cannot write %s", qPrintable(inName));
    return file.fileName();
}

QString tst_kyworkstation::manyFiles()
{
    const QString folder = mFolder.filePath("many");
    if (!QFileInfo::exists(folder) &&
        QProcess::execute(KYSAMPLE, {"--instances", QString::number(sManyFiles), folder}) != 0)
        qFatal("cannot write %s", qPrintable(folder));
    return folder;
}

QString tst_kyworkstation::cell(int inRow, int inColumn)
{
    return studyList().model()->index(inRow, inColumn).data().toString();
}

void tst_kyworkstation::waitForStudies(int inCount)
{
    QTRY_COMPARE_WITH_TIMEOUT(studyList().model()->rowCount(), inCount, 20'000);
}

/// Folders are read as if file after file, of sManyFiles, came with \a inBeforeProgress called ahead of each
/// file's progress, in the reader's thread. The real reader takes files in several threads, and tells of them
/// as it finds time.
void tst_kyworkstation::readWith(const std::function<void(int)>& inBeforeProgress)
{
    mWindow->findChild<KyStudyLoader*>()->setReader(
        [inBeforeProgress](const QString& folder, const Ovg::StudySource::Progress& progress) {
            Ovg::StudySourceResult result;
            for (int done = 1; done <= sManyFiles; ++done) {
                inBeforeProgress(done);
                result.cancelled = !progress(done, sManyFiles);
                if (result.cancelled)
                    return result;
            }
            return Ovg::FolderStudySource(folder).load();
        });
}

QAction& tst_kyworkstation::action(const QString& inText)
{
    for (QAction* found : mWindow->findChildren<QAction*>()) {
        if (plain(found->text()) == inText)
            return *found;
    }
    qFatal("no action %s", qPrintable(inText));
}

QWidget& tst_kyworkstation::console(const QString& inName)
{
    mWindow->findChild<QAction*>("console." + inName)->trigger();
    const QString title = QStringLiteral("Console[QJSEngine]");
    QWidget* found = windowTitled(inName.isEmpty() ? title : title + QStringLiteral(" (%1)").arg(inName));
    if (!found)
        qFatal("no console %s", qPrintable(inName));
    return *found;
}

/// Types a line into the console and clicks "Evaluate"; gives what the output shows.
QString tst_kyworkstation::evaluate(QWidget& ioConsole, const QString& inSource)
{
    auto* input = ioConsole.findChild<QPlainTextEdit*>("w_InputText");
    QTest::keySequence(input, QKeySequence::SelectAll);
    QTest::keyClick(input, Qt::Key_Delete);
    QTest::keyClicks(input, inSource);
    QTest::mouseClick(ioConsole.findChild<QPushButton*>("w_Evaluate"), Qt::LeftButton);
    return ioConsole.findChild<QTextEdit*>("w_OutputText")->toPlainText();
}

void tst_kyworkstation::folderFillsTheStudyList()
{
    QCOMPARE(studyList().model()->rowCount(), 0);
    mWindow->openFolder(mSample);
    waitForStudies(sSampleStudies);
    QCOMPARE(cell(0, KyStudyListModel::Patient), QString::fromUtf8("Müller, Änne"));
    QCOMPARE(cell(0, KyStudyListModel::PatientId), QStringLiteral("SAMPLE-1001"));
    QCOMPARE(cell(0, KyStudyListModel::BirthDate), QLocale().toString(QDate(1958, 4, 12), "d MMM yyyy"));
    QCOMPARE(cell(0, KyStudyListModel::StudyDate), QLocale().toString(QDate(2024, 3, 11), "d MMM yyyy"));
    QCOMPARE(cell(0, KyStudyListModel::Description), QStringLiteral("CT Thorax nativ, Erstuntersuchung"));
    QCOMPARE(cell(0, KyStudyListModel::Modalities), QStringLiteral("CT"));
    QCOMPARE(cell(0, KyStudyListModel::Images), QStringLiteral("40"));
    QCOMPARE(cell(2, KyStudyListModel::Patient), QString::fromUtf8("Sørensen, Bjørn"));
    QCOMPARE(mWindow->findChild<QLabel*>("summary")->text(),
             QStringLiteral("Studies: %1   Images: %2").arg(sSampleStudies).arg(sSampleImages));
    QTRY_VERIFY(message().contains(mSample));
    QVERIFY(!mWindow->findChild<QProgressBar*>("progress")->isVisible());
    QVERIFY(!mWindow->findChild<QToolButton*>("cancelLoading")->isVisible());
    QCOMPARE(KyStudySession::primary().size(), size_t(sSampleStudies));
    QVERIFY(KyStudySession::additional().empty());
}

void tst_kyworkstation::folderIsOpenedByTheMenu()
{
    const ModalAnswer answer(choosing(mSample));
    action("Open Folder").trigger();
    QVERIFY(answer.happened());
    waitForStudies(sSampleStudies);
}

void tst_kyworkstation::additionalFolderIsOpenedByTheMenu()
{
    const ModalAnswer answer(choosing(mSample));
    action("Open Additional Folder").trigger();
    waitForStudies(sSampleStudies);
    QVERIFY(KyStudySession::primary().empty());
    QCOMPARE(KyStudySession::additional().size(), size_t(sSampleStudies));
    QVERIFY(studyList().model()->index(0, 0).data(Qt::FontRole).value<QFont>().italic());
}

void tst_kyworkstation::folderIsOpenedByDrop()
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(mSample)});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.setAccepted(false);
    QCoreApplication::sendEvent(mWindow.get(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(mWindow.get(), &drop);
    waitForStudies(sSampleStudies);
}

void tst_kyworkstation::fileStandsForItsFolder()
{
    QDirIterator files(mSample, QDir::Files, QDirIterator::Subdirectories);
    const QString file = files.next();
    QCOMPARE(KyStudyFolders::of(file), QFileInfo(file).path());
    QCOMPARE(KyStudyFolders::of(mSample), mSample);
    QCOMPARE(KyStudyFolders::of(mFolder.filePath("missing")), mFolder.filePath("missing"));
    mWindow->openFolder(file);
    QTRY_VERIFY_WITH_TIMEOUT(!mWindow->findChild<QProgressBar*>("progress")->isVisible(), 20'000);
    QCOMPARE(studyList().model()->rowCount(), 1);
    QVERIFY2(message().startsWith("Opened " + QFileInfo(file).path()), qPrintable(message()));
}

void tst_kyworkstation::droppedFileStandsForItsFolder()
{
    QMimeData data;
    const QString one = write("one.dcm", "x");
    data.setUrls({QUrl::fromLocalFile(one), QUrl("https://example.org/"),
                  QUrl::fromLocalFile(write("two.dcm", "x")), QUrl::fromLocalFile(mSample)});
    QCOMPARE(KyStudyFolders::dropped(data), QStringList({mFolder.path(), mSample}));
}

void tst_kyworkstation::dropOfOtherThingsIsRefused()
{
    QMimeData data;
    data.setText("text");
    data.setUrls({QUrl("https://example.org/")});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.setAccepted(false);
    QCoreApplication::sendEvent(mWindow.get(), &enter);
    QVERIFY(!enter.isAccepted());
}

void tst_kyworkstation::windowRespondsWhileStudiesAreRead()
{
    int turns = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] { ++turns; });
    timer.start(0);
    readWith([](int done) {
        if (done % 100 == 0)
            QThread::msleep(2);
    });
    mWindow->openFolder(mSample);
    QVERIFY(mWindow->findChild<QProgressBar*>("progress")->isVisible());
    QVERIFY(mWindow->findChild<QToolButton*>("cancelLoading")->isVisible());
    QCOMPARE(turns, 0);
    waitForStudies(sSampleStudies);
    QVERIFY2(turns > 5, qPrintable(QString::number(turns)));
}

void tst_kyworkstation::foldersAreReadOneAfterTheOther()
{
    const QDir sample(mSample);
    const QStringList parts = sample.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QVERIFY(parts.size() > 1);
    for (const QString& part : parts)
        mWindow->openFolder(sample.filePath(part));
    waitForStudies(sSampleStudies);
}

void tst_kyworkstation::loadingIsCancelledByItsButton()
{
    mWindow->openFolder(mSample);
    mWindow->openFolder(mSample, KyStudyLoader::Kind::Additional);
    auto* cancel = mWindow->findChild<QToolButton*>("cancelLoading");
    QTest::mouseClick(cancel, Qt::LeftButton);
    QTRY_VERIFY(!cancel->isVisible());
    QCOMPARE(message(), QStringLiteral("Loading was cancelled"));
    QCOMPARE(studyList().model()->rowCount(), 0);

    mWindow->openFolder(mSample);
    waitForStudies(sSampleStudies);
}

void tst_kyworkstation::progressGoesUpToTheNumberOfFiles()
{
    auto* progress = mWindow->findChild<QProgressBar*>("progress");
    QList<int> values;
    int maximum = -1;
    connect(progress, &QProgressBar::valueChanged, this, [&](int value) {
        values.append(value);
        maximum = progress->maximum();
        QVERIFY(progress->isVisible());
        QCOMPARE(progress->minimum(), 0);
    });
    mWindow->openFolder(manyFiles());
    // It does not know yet.
    QVERIFY(progress->isVisible());
    QCOMPARE(progress->maximum(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(!progress->isVisible(), 60'000);
    QVERIFY(!values.isEmpty());
    QVERIFY(std::is_sorted(values.begin(), values.end()));
    QCOMPARE(maximum, sManyFiles);
    QCOMPARE(values.last(), sManyFiles);
    QVERIFY(message().startsWith("Opened "));
}

void tst_kyworkstation::progressIsShownOnTheWay()
{
    auto* progress = mWindow->findChild<QProgressBar*>("progress");
    QList<int> values;
    connect(progress, &QProgressBar::valueChanged, this, [&](int value) { values.append(value); });
    // Rests are longer than the time between two signals of a QFutureWatcher.
    readWith([](int done) {
        if (done % 500 == 0)
            QThread::msleep(100);
    });
    mWindow->openFolder(mSample);
    waitForStudies(sSampleStudies);
    QTRY_VERIFY(!progress->isVisible());
    for (const int rest : {500, 1000, 1500})
        QVERIFY2(values.contains(rest), qPrintable(QString::number(rest)));
}

void tst_kyworkstation::loadingIsCancelledInItsMidst_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("button") << false;
    QTest::newRow("Esc") << true;
}

void tst_kyworkstation::loadingIsCancelledInItsMidst()
{
    QFETCH(bool, byKey);
    mWindow->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(mWindow.get()));
    auto* progress = mWindow->findChild<QProgressBar*>("progress");
    auto* cancel = mWindow->findChild<QToolButton*>("cancelLoading");
    int cancelledAt = 0;
    connect(progress, &QProgressBar::valueChanged, cancel, [&](int value) {
        if (value <= 0 || cancelledAt > 0)
            return;
        cancelledAt = value;
        if (byKey)
            QTest::keyClick(mWindow.get(), Qt::Key_Escape);
        else
            QTest::mouseClick(cancel, Qt::LeftButton);
    });
    // In the middle the reader rests until the user has cancelled.
    const auto cancelled = std::make_shared<QSemaphore>();
    connect(progress, &QProgressBar::valueChanged, cancel, [cancelled] { cancelled->release(); });
    readWith([cancelled](int done) {
        if (done == sManyFiles / 2)
            QThread::msleep(100);
        if (done == sManyFiles / 2 + 1)
            cancelled->tryAcquire(1, 30'000);
    });
    mWindow->openFolder(mSample);
    QTRY_VERIFY_WITH_TIMEOUT(!cancel->isVisible(), 60'000);
    QVERIFY2(cancelledAt > 0 && cancelledAt < sManyFiles, qPrintable(QString::number(cancelledAt)));
    QCOMPARE(message(), QStringLiteral("Loading was cancelled"));
    QCOMPARE(studyList().model()->rowCount(), 0);
    QVERIFY(KyStudySession::primary().empty());

    // The list and the bar are ready for the next folder.
    progress->disconnect(cancel);
    mWindow->openFolder(mSample);
    waitForStudies(sSampleStudies);
    QTRY_VERIFY(!progress->isVisible());
}

void tst_kyworkstation::windowCanEndWhileStudiesAreRead()
{
    mWindow->openFolder(mSample);
    mWindow.reset();
    QVERIFY(KyStudySession::primary().empty());
    mWindow = std::make_unique<KyMainWindow>();
}

void tst_kyworkstation::studyThatIsOpenedAgainStandsOnce()
{
    mWindow->openFolder(mSample);
    mWindow->openFolder(mSample);
    auto* progress = mWindow->findChild<QProgressBar*>("progress");
    QTRY_VERIFY_WITH_TIMEOUT(!progress->isVisible(), 20'000);
    QCOMPARE(studyList().model()->rowCount(), sSampleStudies);
}

void tst_kyworkstation::studyChangesItsList()
{
    mWindow->openFolder(mSample);
    mWindow->openFolder(mSample, KyStudyLoader::Kind::Additional);
    auto* progress = mWindow->findChild<QProgressBar*>("progress");
    QTRY_VERIFY_WITH_TIMEOUT(!progress->isVisible(), 20'000);
    QVERIFY(KyStudySession::primary().empty());
    QCOMPARE(KyStudySession::additional().size(), size_t(sSampleStudies));
}

void tst_kyworkstation::missingFolderIsTold()
{
    mWindow->openFolder(mFolder.filePath("missing"));
    QTRY_VERIFY(!mWindow->findChild<QProgressBar*>("progress")->isVisible());
    QVERIFY2(message().contains("missing"), qPrintable(message()));
}

void tst_kyworkstation::folderWithoutStudiesIsTold()
{
    QTemporaryDir empty;
    mWindow->openFolder(empty.path());
    QTRY_COMPARE(message(), QStringLiteral("There is no DICOM study below %1").arg(empty.path()));
}

void tst_kyworkstation::failedFolderIsToldAlsoBehindOthers()
{
    mWindow->openFolder(mSample);
    mWindow->openFolder(mFolder.filePath("missing"));
    const QTemporaryDir empty;
    mWindow->openFolder(empty.path());
    mWindow->openFolder(mSample);
    QTRY_VERIFY_WITH_TIMEOUT(!mWindow->findChild<QProgressBar*>("progress")->isVisible(), 20'000);
    const QStringList parts = message().split(QStringLiteral(" – "));
    QCOMPARE(parts.size(), 3);
    QVERIFY2(parts.at(0).contains("missing"), qPrintable(message()));
    QCOMPARE(parts.at(1), QStringLiteral("further folders that failed: 1"));
    QCOMPARE(parts.at(2), QStringLiteral("Opened folders: 2 (images: %1)").arg(2 * sSampleImages));
    QVERIFY(mWindow->findChild<QLabel*>("loadResult")->toolTip().contains(empty.path()));

    // The next load tells only of itself, and a tip of the menus takes nothing away.
    mWindow->openFolder(mSample);
    QTRY_VERIFY_WITH_TIMEOUT(!mWindow->findChild<QProgressBar*>("progress")->isVisible(), 20'000);
    QVERIFY2(message().startsWith("Opened " + mSample), qPrintable(message()));
    mWindow->statusBar()->showMessage("tip");
    mWindow->statusBar()->clearMessage();
    QVERIFY(message().startsWith("Opened ") && mWindow->findChild<QLabel*>("loadResult")->isVisible());
}

void tst_kyworkstation::skippedFilesAreCounted()
{
    QTemporaryDir folder;
    QFile text(folder.filePath("readme.txt"));
    QVERIFY(text.open(QIODevice::WriteOnly));
    text.write("no DICOM");
    text.close();
    mWindow->openFolder(folder.path());
    QTRY_VERIFY(message().contains("files skipped: 1"));
    QTRY_VERIFY(logView().model()->rowCount() > 0);
}

void tst_kyworkstation::allStudiesAreClosedByTheMenu()
{
    mWindow->openFolder(mSample);
    waitForStudies(sSampleStudies);
    action("Close All Studies").trigger();
    QCOMPARE(studyList().model()->rowCount(), 0);
    QVERIFY(KyStudySession::primary().empty());
}

void tst_kyworkstation::studiesAreSortedByTheirValues()
{
    mWindow->openFolder(mSample);
    waitForStudies(sSampleStudies);
    studyList().sortByColumn(KyStudyListModel::StudyDate, Qt::DescendingOrder);
    QCOMPARE(cell(0, KyStudyListModel::PatientId), QStringLiteral("SAMPLE-1002"));
    studyList().sortByColumn(KyStudyListModel::Images, Qt::DescendingOrder);
    QCOMPARE(cell(0, KyStudyListModel::Images), QStringLiteral("40"));
    studyList().sortByColumn(KyStudyListModel::BirthDate, Qt::DescendingOrder);
    QCOMPARE(cell(0, KyStudyListModel::PatientId), QStringLiteral("SAMPLE-1002"));
}

void tst_kyworkstation::emptyListSaysHowToFillIt()
{
    // Text in its middle, on the background of the list.
    const QRgb base = studyList().palette().color(QPalette::Base).rgb();
    const auto inkRows = [&] {
        const QImage image = studyList().viewport()->grab().toImage();
        QList<int> rows;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixel(x, y) != base && (rows.isEmpty() || rows.last() != y))
                    rows.append(y);
            }
        }
        return rows;
    };
    const QList<int> rows = inkRows();
    const int middle = studyList().viewport()->height() / 2;
    const int line = studyList().fontMetrics().lineSpacing();
    QVERIFY(!rows.isEmpty());
    QVERIFY2(rows.first() > middle - 2 * line && rows.first() < middle, "two lines around the middle");
    QVERIFY2(rows.last() < middle + 2 * line && rows.last() > middle, "two lines around the middle");

    // It gives way to the studies, and comes back.
    mWindow->openFolder(mSample);
    waitForStudies(sSampleStudies);
    const int rowsHeight = studyList().visualRect(studyList().model()->index(sSampleStudies - 1, 0)).bottom();
    QVERIFY(rowsHeight < middle - 2 * line);
    QVERIFY(inkRows().last() <= rowsHeight);
    action("Close All Studies").trigger();
    QCOMPARE(inkRows(), rows);
}

void tst_kyworkstation::consoleOpensByItsMenuAndEvaluates()
{
    mWindow->openFolder(mSample);
    waitForStudies(sSampleStudies);
    QWidget& window = console(QString());
    QVERIFY(window.isVisible());
    QCOMPARE(evaluate(window, "StudyList.get(\"ALL_STUDIES_OF_PATIENT\").length"), QStringLiteral("2"));
    QCOMPARE(evaluate(window, "print('a', 1); StudyList.get('PRIMARY_STUDIES').length"),
             QStringLiteral("a 1\n3"));
}

void tst_kyworkstation::consolesOfTwoEnginesAreApart()
{
    QWidget& tools = console("Tools");
    QWidget& reports = console("Reports");
    QVERIFY(&tools != &reports);
    evaluate(tools, "var who = 'tools'");
    evaluate(reports, "var who = 'reports'");
    QCOMPARE(evaluate(tools, "who"), QStringLiteral("tools"));
    QCOMPARE(evaluate(reports, "who"), QStringLiteral("reports"));
    QCOMPARE(evaluate(console(QString()), "typeof who"), QStringLiteral("undefined"));
}

void tst_kyworkstation::closedConsoleOpensAgain()
{
    QWidget& window = console("Tools");
    evaluate(window, "'kept'");
    window.close();
    QVERIFY(!window.isVisible());
    QCOMPARE(&console("Tools"), &window);
    QVERIFY(window.isVisible());
    QCOMPARE(window.findChild<QTextEdit*>("w_OutputText")->toPlainText(), QStringLiteral("kept"));
}

void tst_kyworkstation::newConsoleAsksForAName()
{
    const ModalAnswer answer([](QWidget* window) {
        auto* dialog = qobject_cast<QInputDialog*>(window);
        QVERIFY(dialog);
        QTest::keyClicks(dialog->findChild<QLineEdit*>(), " Fresh & new ");
        dialog->accept();
    });
    action("New Console").trigger();
    QWidget* window = windowTitled("Console[QJSEngine] (Fresh & new)");
    QVERIFY(window && window->isVisible());
    QVERIFY(mWindow->findChild<QAction*>("console.Fresh & new"));
    QVERIFY(OvPropertyPool::instance()
                ->value<QList<QString>>("Workstation.ConsoleNames", {})
                .contains(QStringLiteral("Fresh & new")));
}

void tst_kyworkstation::cancelledNewConsoleChangesNothing()
{
    const auto before = OvPropertyPool::instance()->value<QList<QString>>("Workstation.ConsoleNames", {});
    const ModalAnswer answer([](QWidget* window) { qobject_cast<QDialog*>(window)->reject(); });
    action("New Console").trigger();
    QVERIFY(answer.happened());
    QCOMPARE(OvPropertyPool::instance()->value<QList<QString>>("Workstation.ConsoleNames", {}), before);
}

void tst_kyworkstation::scriptRunsAndPrints()
{
    mWindow->openFolder(mSample);
    waitForStudies(sSampleStudies);
    mWindow->runScript(
        write("count.js", "print('studies', StudyList.get('PRIMARY_STUDIES').length)\n'value'"));
    auto* output = mWindow->findChild<QTextEdit*>("scriptOutputText");
    QVERIFY2(output->toPlainText().endsWith("count.js\nstudies 3\nvalue"), qPrintable(output->toPlainText()));
    QVERIFY(output->isVisible());
}

void tst_kyworkstation::scriptPrintsHereAlsoWhenAConsoleWasOpened()
{
    QWidget& window = console(QString());
    evaluate(window, "'shown'");
    window.close();
    const QString file = write("late.js", "function late() { print('late') } print('now')");
    mWindow->runScript(file);
    QVERIFY2(scriptOutput().endsWith("late.js\nnow"), qPrintable(scriptOutput()));
    auto* output = window.findChild<QTextEdit*>("w_OutputText");
    QCOMPARE(output->toPlainText(), QStringLiteral("shown"));

    // The console prints into its own pane as before, and so does what the script has left behind.
    QCOMPARE(evaluate(console(QString()), "print('here'); 1"), QStringLiteral("here\n1"));
    QCOMPARE(evaluate(console(QString()), "late()"), QStringLiteral("late\nundefined"));
    mWindow->runScript(file);
    QVERIFY2(scriptOutput().endsWith("now"), qPrintable(scriptOutput()));
    QVERIFY(!scriptOutput().contains("late\n"));
}

void tst_kyworkstation::scriptOutputKeepsTheNewestLines()
{
    const QByteArray lines = QByteArray::number(KyScriptOutputPane::MaxLines * 8 / 5);
    mWindow->runScript(write("many.js", "for (var i = 1; i <= " + lines + "; ++i) print('line', i)"));
    const auto* document = mWindow->findChild<QTextEdit*>("scriptOutputText")->document();
    QVERIFY(document->blockCount() >= KyScriptOutputPane::MaxLines);
    QVERIFY2(document->blockCount() <= KyScriptOutputPane::MaxLines * 3 / 2,
             qPrintable(QString::number(document->blockCount())));
    QCOMPARE(document->lastBlock().text(), QString("line " + lines));
    const QStringList shown = scriptOutput().split('\n');
    for (qsizetype i = 1; i < shown.size(); ++i) {
        if (shown.at(i).section(' ', 1).toInt() != shown.at(i - 1).section(' ', 1).toInt() + 1)
            QFAIL(qPrintable(shown.at(i - 1) + " is followed by " + shown.at(i)));
    }
}

void tst_kyworkstation::scriptOutputKeepsTheNewestCharacters()
{
    mWindow->runScript(write("long.js", "var long = new Array(50001).join(' x');"
                                        "for (var i = 0; i < 70; ++i) print(i + long)"));
    const auto* document = mWindow->findChild<QTextEdit*>("scriptOutputText")->document();
    QVERIFY(document->characterCount() >= KyScriptOutputPane::MaxCharacters);
    QVERIFY(document->characterCount() <= KyScriptOutputPane::MaxCharacters * 3 / 2);
    QVERIFY(document->lastBlock().text().startsWith("69 x"));
    QCOMPARE(document->firstBlock().text().count('x'), 50'000);
}

void tst_kyworkstation::scriptOutputIsCleared()
{
    mWindow->runScript(write("some.js", "print('some')"));
    QVERIFY(!scriptOutput().isEmpty());
    QTest::mouseClick(mWindow->findChild<QPushButton*>("clearScriptOutput"), Qt::LeftButton);
    QCOMPARE(scriptOutput(), QString());
    mWindow->runScript(write("some.js", "print('more')"));
    QVERIFY(scriptOutput().endsWith("some.js\nmore"));
}

void tst_kyworkstation::failingScriptIsTold()
{
    mWindow->runScript(write("bad.js", "1;\n\nthrow new Error('this <b>fails</b>')"));
    const QString shown = mWindow->findChild<QTextEdit*>("scriptOutputText")->toPlainText();
    QVERIFY2(shown.contains("Exception: this <b>fails</b>\nLine: 3"), qPrintable(shown));
}

void tst_kyworkstation::unreadableScriptIsTold_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("missing") << mFolder.filePath("missing.js");
    QTest::newRow("not UTF-8") << write("latin1.js", "'M\xfcller'");
    QTest::newRow("folder") << mFolder.path();
}

void tst_kyworkstation::unreadableScriptIsTold()
{
    QFETCH(QString, file);
    mWindow->runScript(file);
    QVERIFY2(scriptOutput().startsWith("Cannot read the script " + file), qPrintable(scriptOutput()));
    QVERIFY(OvPropertyPool::instance()->value<QList<QString>>("Workstation.RecentScripts", {}).isEmpty());
}

void tst_kyworkstation::scriptIsChosenByTheMenu()
{
    const QString file = write("chosen.js", "6 * 7");
    const ModalAnswer answer(choosing(file));
    action("Run Script").trigger();
    QVERIFY(answer.happened());
    QVERIFY(mWindow->findChild<QTextEdit*>("scriptOutputText")->toPlainText().endsWith("\n42"));
}

void tst_kyworkstation::recentScriptsRunAgain()
{
    const QString file =
        write("again & again.js", "var runs = (typeof runs === 'undefined' ? 0 : runs) + 1; runs");
    mWindow->runScript(file);
    auto* menu = mWindow->findChild<QMenu*>("recentScripts");
    Q_EMIT menu->aboutToShow();
    QVERIFY(menu->isEnabled());
    QCOMPARE(menu->actions().first()->text(), QStringLiteral("&1  again && again.js"));
    menu->actions().first()->trigger();
    const QStringList shown = mWindow->findChild<QTextEdit*>("scriptOutputText")->toPlainText().split('\n');
    QCOMPARE(shown.last().toInt(), shown.at(1).toInt() + 1);
}

void tst_kyworkstation::recentScriptsAreBounded()
{
    for (int i = 0; i < 12; ++i)
        KyScriptingMenu::addRecentScript(QStringLiteral("/s/%1.js").arg(i));
    KyScriptingMenu::addRecentScript("/s/7.js");
    const auto recent = OvPropertyPool::instance()->value<QList<QString>>("Workstation.RecentScripts", {});
    QCOMPARE(recent.size(), KyScriptingMenu::MaxRecentScripts);
    QCOMPARE(recent.mid(0, 3), QList<QString>({"/s/7.js", "/s/11.js", "/s/10.js"}));
    auto* menu = mWindow->findChild<QMenu*>("recentScripts");
    Q_EMIT menu->aboutToShow();
    menu->actions().last()->trigger();
    QVERIFY(!menu->isEnabled());
}

void tst_kyworkstation::logShowsLinesOfAllThreads()
{
    const QAbstractItemModel& lines = *logView().model();
    const int before = lines.rowCount();
    getTheLogInstance().trace(3, "Here", "first line\nsecond line");
    std::thread([] { getTheLogInstance().trace(1, "There", "M\xfcller"); }).join();
    QTRY_COMPARE(lines.rowCount(), before + 2);
    QCOMPARE(lines.index(before, KyLogModel::Level).data().toString(), QStringLiteral("Error"));
    QVERIFY(!lines.index(before, KyLogModel::Level).data(Qt::DecorationRole).value<QIcon>().isNull());
    QCOMPARE(lines.index(before, KyLogModel::Context).data().toString(), QStringLiteral("Here"));
    QCOMPARE(lines.index(before, KyLogModel::Text).data().toString(), QString::fromUtf8("first line …"));
    QCOMPARE(lines.index(before, KyLogModel::Text).data(Qt::ToolTipRole).toString(),
             QStringLiteral("first line\nsecond line"));
    QCOMPARE(lines.index(before + 1, KyLogModel::Text).data().toString(), QString::fromUtf8("Müller"));
}

void tst_kyworkstation::logIsFilteredByLevel()
{
    for (int level = 0; level <= 3; ++level)
        getTheLogInstance().trace(level, "Levels", "line");
    QTRY_VERIFY(logView().model()->rowCount() >= 4);
    auto* levels = mWindow->findChild<QComboBox*>("logLevels");
    QCOMPARE(levels->count(), 4);
    const int all = logView().model()->rowCount();
    QTest::keyClick(levels, Qt::Key_End);
    QVERIFY(logView().model()->rowCount() < all);
    for (int row = 0; row < logView().model()->rowCount(); ++row)
        QCOMPARE(logView().model()->index(row, 0).data(KyLogModel::LevelRole).toInt(), 3);
    QTest::keyClick(levels, Qt::Key_Home);
    QCOMPARE(logView().model()->rowCount(), all);
}

void tst_kyworkstation::logIsSearched()
{
    getTheLogInstance().trace(1, "Search", "a Needle here\nand a thread there");
    getTheLogInstance().trace(1, "Search", "only hay");
    QTRY_VERIFY(logView().model()->rowCount() >= 2);
    auto* search = mWindow->findChild<QLineEdit*>("logSearch");
    QTest::keyClicks(search, "needle");
    QCOMPARE(logView().model()->rowCount(), 1);
    search->clear();
    QTest::keyClicks(search, "THREAD");
    QCOMPARE(logView().model()->rowCount(), 1);
    search->clear();
    QTest::keyClicks(search, "search");
    QCOMPARE(logView().model()->rowCount(), 2);
}

void tst_kyworkstation::logIsBounded()
{
    for (int i = 0; i < KyLogModel::MaxLines + 500; ++i)
        getTheLogInstance().tracef(1, "Many", "line %d", i);
    const QAbstractItemModel& lines = *logView().model();
    QTRY_COMPARE(lines.rowCount(), KyLogModel::MaxLines);
    QCOMPARE(lines.index(KyLogModel::MaxLines - 1, KyLogModel::Text).data().toString(),
             QStringLiteral("line %1").arg(KyLogModel::MaxLines + 499));
    getTheLogInstance().trace(1, "Many", "last");
    QTRY_COMPARE(lines.index(KyLogModel::MaxLines - 1, KyLogModel::Text).data().toString(),
                 QStringLiteral("last"));
    QCOMPARE(lines.rowCount(), KyLogModel::MaxLines);
}

void tst_kyworkstation::logIsCopiedAndCleared()
{
    getTheLogInstance().trace(2, "Copy", "one\ntwo");
    const QAbstractItemModel& lines = *logView().model();
    QTRY_VERIFY(lines.rowCount() > 0);
    logView().setCurrentIndex(lines.index(lines.rowCount() - 1, 0));
    logView().actions().first()->trigger();
    QVERIFY2(QGuiApplication::clipboard()->text().endsWith("\tWarning\tCopy\tone\ntwo"),
             qPrintable(QGuiApplication::clipboard()->text()));
    for (QPushButton* button : mWindow->findChildren<QPushButton*>()) {
        if (plain(button->text()) == "Clear")
            QTest::mouseClick(button, Qt::LeftButton);
    }
    QCOMPARE(lines.rowCount(), 0);
}

QTreeWidget& tst_kyworkstation::settings()
{
    action("Settings").trigger();
    return *mWindow->findChild<QWidget*>("settings")->findChild<QTreeWidget*>();
}

QTreeWidgetItem* tst_kyworkstation::setting(const QString& inLabel)
{
    const auto found = settings().findItems(inLabel, Qt::MatchExactly | Qt::MatchRecursive);
    return found.isEmpty() ? nullptr : found.first();
}

void tst_kyworkstation::settingsShowEveryPropertyUnderItsLabels()
{
    QTreeWidget& tree = settings();
    for (const OvVariant* property : OvPropertyPool::instance()->variants()) {
        const QString id = QString::fromLatin1(property->identifier().c_str());
        QTreeWidgetItem* item = setting(OvTranslationProperty::label(id));
        QVERIFY2(item, qPrintable(id));
        QCOMPARE(item->toolTip(0), id);
        QVERIFY(tree.itemWidget(item, 1));
    }
    QTreeWidgetItem* indentation = setting("Automatic Indentation");
    QCOMPARE(indentation->parent()->text(0), QStringLiteral("Scripting Console"));
    QCOMPARE(indentation->parent()->parent()->text(0), QStringLiteral("Advanced Settings"));
    QCOMPARE(setting("Number of Logged Lines for Scripts")->parent(), indentation->parent()->parent());
}

void tst_kyworkstation::settingIsChangedByItsCheckBox()
{
    const auto isOn = [] {
        return OvPropertyPool::instance()->value<bool>("AdvancedSettings.ScriptingConsole.AutoIndentation",
                                                       false);
    };
    auto* box = settings().itemWidget(setting("Automatic Indentation"), 1)->findChild<QCheckBox*>();
    QVERIFY(box->isChecked() && isOn());
    QTest::keyClick(box, Qt::Key_Space);
    QVERIFY(!isOn());
    QTest::keyClick(box, Qt::Key_Space);
    QVERIFY(isOn());
}

void tst_kyworkstation::settingIsChangedByItsSpinBox()
{
    auto* box =
        settings().itemWidget(setting("Number of Logged Lines for Scripts"), 1)->findChild<QSpinBox*>();
    QCOMPARE(box->value(), 1);
    QTest::keyClick(box, Qt::Key_Up);
    QCOMPARE(OvPropertyPool::instance()->value<int>("Scripting.LogNumLines", -9), 2);
    box->selectAll();
    QTest::keyClicks(box, "-1");
    QCOMPARE(OvPropertyPool::instance()->value<int>("Scripting.LogNumLines", -9), 2);
    QTest::keyClick(box, Qt::Key_Return);
    QCOMPARE(OvPropertyPool::instance()->value<int>("Scripting.LogNumLines", -9), -1);
}

void tst_kyworkstation::settingIsChosenFromTheValuesOfItsEnumeration()
{
    OvEnum::prepareRegistration("Speed");
    OvEnum::registerValue("Speed", std::make_unique<SpeedValue>(1, "Slow", "Quite slow"));
    OvEnum::registerValue("Speed", std::make_unique<SpeedValue>(7, "Fast", QString()));
    OvEnum::registerEnum("Speed");
    OvPropertyPool& pool = *OvPropertyPool::instance();
    const auto* property = pool.property<Speed>("Test.Speed", Speed(), pool.defaultSerializer());
    QWidget* editor = settings().itemWidget(setting("Speed"), 1);
    auto* box = editor->findChild<QComboBox*>();
    QVERIFY(box);
    QCOMPARE(box->count(), 2);
    QCOMPARE(box->itemText(0), QStringLiteral("Quite slow"));
    QCOMPARE(box->itemText(1), QStringLiteral("Fast"));
    QCOMPARE(box->currentIndex(), 0);
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(property->value.value(), 7);
    QVERIFY(pool.variant("Test.Speed")->setValueFromQString("Slow"));
    QCOMPARE(box->currentIndex(), 0);
    QTest::keyClick(box, Qt::Key_End);
    QCOMPARE(property->value.value(), 7);
    QTest::mouseClick(editor->findChild<QToolButton*>(), Qt::LeftButton);
    QCOMPARE(property->value.value(), 1);
    QCOMPARE(box->currentIndex(), 0);
}

void tst_kyworkstation::wheelChangesOnlyTheSettingInUse()
{
    auto* box =
        settings().itemWidget(setting("Number of Logged Lines for Scripts"), 1)->findChild<QSpinBox*>();
    const auto turn = [box] {
        const QPointF middle(QRectF(box->rect()).center());
        QWheelEvent event(middle, box->mapToGlobal(middle), QPoint(), QPoint(0, 120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(box, &event);
    };
    QApplication::setActiveWindow(box->window());
    QVERIFY(!box->hasFocus());
    turn();
    QCOMPARE(box->value(), 1);
    box->setFocus();
    QVERIFY(box->hasFocus());
    turn();
    QCOMPARE(box->value(), 2);
}

void tst_kyworkstation::settingIsResetToItsDefault()
{
    QWidget* editor = settings().itemWidget(setting("Number of Logged Lines for Scripts"), 1);
    auto* reset = editor->findChild<QToolButton*>();
    QVERIFY(!reset->isEnabled());
    QTest::keyClick(editor->findChild<QSpinBox*>(), Qt::Key_Up);
    QVERIFY(reset->isEnabled());
    QTest::mouseClick(reset, Qt::LeftButton);
    QCOMPARE(OvPropertyPool::instance()->value<int>("Scripting.LogNumLines", -9), 1);
    QCOMPARE(editor->findChild<QSpinBox*>()->value(), 1);
    QVERIFY(!reset->isEnabled());
    stop();
    start();
    QCOMPARE(OvPropertyPool::instance()->value<int>("Scripting.LogNumLines", -9), 1);
}

void tst_kyworkstation::unreadableSettingIsTakenBack()
{
    auto* line =
        settings().itemWidget(setting("Engines with a Console in the Menu"), 1)->findChild<QLineEdit*>();
    QCOMPARE(line->text(), QStringLiteral("Reports,Tools"));
    line->selectAll();
    QTest::keyClicks(line, "\"not closed");
    QTest::keyClick(line, Qt::Key_Return);
    QCOMPARE(line->text(), QStringLiteral("Reports,Tools"));
    line->selectAll();
    QTest::keyClicks(line, "One,\"Two, Three\"");
    QTest::keyClick(line, Qt::Key_Return);
    QCOMPARE(OvPropertyPool::instance()->value<QList<QString>>("Workstation.ConsoleNames", {}),
             QList<QString>({"One", "Two, Three"}));
    auto* menu = mWindow->findChild<QMenu*>("scriptingMenu");
    Q_EMIT menu->aboutToShow();
    QVERIFY(mWindow->findChild<QAction*>("console.Two, Three"));
    QVERIFY(!mWindow->findChild<QAction*>("console.Tools"));
}

void tst_kyworkstation::settingsFollowChangesFromElsewhere()
{
    auto* box = settings().itemWidget(setting("Automatic Indentation"), 1)->findChild<QCheckBox*>();
    OvVariant* property =
        OvPropertyPool::instance()->variant("AdvancedSettings.ScriptingConsole.AutoIndentation");
    QVERIFY(property->setValueFromQString("false"));
    QVERIFY(!box->isChecked());
    OvPropertyPool::instance()->property<double>("Added.LaterOn", 2.5,
                                                 OvPropertyPool::instance()->defaultSerializer());
    QTreeWidgetItem* added = nullptr;
    QTRY_VERIFY((added = setting("Later On")));
    QCOMPARE(added->parent()->text(0), QStringLiteral("Added"));
}

void tst_kyworkstation::settingsAreSearched()
{
    QTreeWidget& tree = settings();
    auto* search = mWindow->findChild<QWidget*>("settings")
                       ->findChild<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly);
    QTest::keyClicks(search, "indent");
    QVERIFY(!setting("Automatic Indentation")->isHidden());
    QVERIFY(!setting("Scripting Console")->isHidden());
    QVERIFY(setting("Date Format")->isHidden());
    QVERIFY(setting("General")->isHidden());
    search->clear();
    QTest::keyClicks(search, "general");
    QVERIFY(!setting("Date Format")->isHidden());
    QVERIFY(setting("Automatic Indentation")->isHidden());
    search->clear();
    for (int i = 0; i < tree.topLevelItemCount(); ++i)
        QVERIFY(!tree.topLevelItem(i)->isHidden());
}

void tst_kyworkstation::panelIsAddedAsATabWithItsMenuEntry()
{
    auto* content = new QLabel("content");
    QDockWidget& panel = mWindow->addPanel({"testDock", "Te&st", QKeySequence("Ctrl+Alt+T")}, content);
    QCOMPARE(panel.windowTitle(), QStringLiteral("Test"));
    auto* log = mWindow->findChild<QDockWidget*>("logDock");
    QTRY_VERIFY(mWindow->tabifiedDockWidgets(&panel).contains(log));
    QAction* entry = mWindow->findChild<QMenu*>("viewMenu")->actions().last();
    QCOMPARE(entry->text(), QStringLiteral("Te&st"));
    QCOMPARE(entry->shortcut(), QKeySequence("Ctrl+Alt+T"));
    panel.raise();
    QTRY_VERIFY(content->isVisible());
    entry->trigger();
    QVERIFY(!content->isVisible());
}

void tst_kyworkstation::panelStandsWhereItWasPut()
{
    const auto addPanel = [this]() -> QDockWidget& {
        return mWindow->addPanel({"testDock", "Test", QKeySequence()}, new QLabel("content"));
    };
    mWindow->addDockWidget(Qt::LeftDockWidgetArea, &addPanel());
    stop();
    start();
    QCOMPARE(mWindow->dockWidgetArea(&addPanel()), Qt::LeftDockWidgetArea);
}

void tst_kyworkstation::viewerAreaStandsBelowTheStudyList()
{
    QCOMPARE(mWindow->viewerArea(), nullptr);
    QCOMPARE(studyList().height(), mWindow->centralWidget()->height());

    auto* first = new QLabel("viewers");
    mWindow->setViewerArea(first);
    QCOMPARE(mWindow->viewerArea(), first);
    QTRY_VERIFY(first->isVisible() && first->height() > 50 && studyList().height() > 50);
    QVERIFY(first->mapTo(mWindow.get(), QPoint()).y() >=
            studyList().mapTo(mWindow.get(), QPoint()).y() + studyList().height());

    const QPointer<QWidget> gone = first;
    auto* second = new QLabel("others");
    mWindow->setViewerArea(second);
    QVERIFY(!gone);
    QCOMPARE(mWindow->viewerArea(), second);
    mWindow->setViewerArea(nullptr);
    QCOMPARE(mWindow->viewerArea(), nullptr);
    QTRY_COMPARE(studyList().height(), mWindow->centralWidget()->height());
}

void tst_kyworkstation::viewerAreaKeepsItsHeight()
{
    auto* area = new QLabel("viewers");
    mWindow->setViewerArea(area);
    QTRY_VERIFY(area->isVisible());
    auto* central = mWindow->findChild<QSplitter*>("centralArea");
    central->setSizes({150, central->height() - 150 - central->handleWidth()});
    const int listHeight = studyList().height();
    QVERIFY(std::abs(listHeight - 150) < 5);
    stop();
    start();
    area = new QLabel("viewers");
    mWindow->setViewerArea(area);
    QTRY_VERIFY(area->isVisible());
    QTRY_VERIFY(std::abs(studyList().height() - listHeight) <= 2);
}

void tst_kyworkstation::placesAndSettingsAreKeptBetweenStarts()
{
    mWindow->setGeometry(30, 40, 700, 500);
    studyList().setColumnWidth(KyStudyListModel::Description, 123);
    mWindow->findChild<QDockWidget*>("logDock")->hide();
    OvPropertyPool::instance()->variant("Scripting.LogNumLines")->setValueFromQString("5");
    KyScriptingMenu::addRecentScript("/s/kept.js");
    stop();
    start();
    QCOMPARE(mWindow->geometry(), QRect(30, 40, 700, 500));
    QCOMPARE(studyList().columnWidth(KyStudyListModel::Description), 123);
    QVERIFY(!mWindow->findChild<QDockWidget*>("logDock")->isVisible());
    QCOMPARE(OvPropertyPool::instance()->value<int>("Scripting.LogNumLines", -9), 5);
    QCOMPARE(mWindow->findChild<QMenu*>("recentScripts")->actions().first()->statusTip(),
             QStringLiteral("/s/kept.js"));
}

void tst_kyworkstation::closingTheWindowClosesTheConsoles()
{
    QWidget& window = console("Tools");
    settings();
    mWindow->close();
    QVERIFY(!window.isVisible());
    QVERIFY(!mWindow->isVisible());
}

void tst_kyworkstation::menusOpenByTheMouse()
{
    QMenuBar& bar = *mWindow->menuBar();
    for (QAction* title : bar.actions()) {
        QTest::mouseClick(&bar, Qt::LeftButton, Qt::NoModifier, bar.actionGeometry(title).center());
        QTRY_VERIFY2(title->menu()->isVisible(), qPrintable(title->text()));
        QVERIFY(!title->menu()->actions().isEmpty());
        title->menu()->close();
    }
    QMenu* scripting = mWindow->findChild<QMenu*>("scriptingMenu");
    QTest::mouseClick(&bar, Qt::LeftButton, Qt::NoModifier,
                      bar.actionGeometry(scripting->menuAction()).center());
    QTRY_VERIFY(scripting->isVisible());
    QTest::mouseClick(scripting, Qt::LeftButton, Qt::NoModifier,
                      scripting->actionGeometry(mWindow->findChild<QAction*>("console.Tools")).center());
    QWidget* window = windowTitled("Console[QJSEngine] (Tools)");
    QTRY_VERIFY(window && window->isVisible());
}

void tst_kyworkstation::menusOpenByTheirKeys()
{
    mWindow->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(mWindow.get()));
    QTest::keyClick(mWindow.get(), Qt::Key_F, Qt::AltModifier);
    QMenu* file = mWindow->findChild<QMenu*>("fileMenu");
    QTRY_VERIFY(file->isVisible());
    mWindow->openFolder(mSample);
    waitForStudies(sSampleStudies);
    QTest::keyClick(file, Qt::Key_C);
    QTRY_COMPARE(studyList().model()->rowCount(), 0);
    QVERIFY(!file->isVisible());
}

void tst_kyworkstation::consoleOpensByItsKey()
{
    mWindow->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(mWindow.get()));
    QTest::keyClick(mWindow.get(), Qt::Key_F12);
    QWidget* window = windowTitled("Console[QJSEngine]");
    QTRY_VERIFY(window && window->isVisible());
    QVERIFY(QTest::qWaitForWindowActive(window));
    // Ready to type.
    QCOMPARE(window->focusWidget(), window->findChild<QPlainTextEdit*>("w_InputText"));
}

void tst_kyworkstation::everyActionHasAKey()
{
    int count = 0;
    QList<QKeySequence> keys;
    for (QMenu* menu : mWindow->menuBar()->findChildren<QMenu*>() + mWindow->findChildren<QMenu*>()) {
        for (const QAction* entry : menu->actions()) {
            if (entry->isSeparator())
                continue;
            ++count;
            QVERIFY2(QString(entry->text()).remove("&&").contains('&') || !entry->shortcut().isEmpty(),
                     qPrintable(entry->text()));
        }
    }
    QVERIFY(count > 10);
    for (const QAction* entry : mWindow->findChildren<QAction*>()) {
        // One that holds in its own widget only may have its like in another one.
        if (entry->shortcut().isEmpty() || entry->shortcutContext() == Qt::WidgetWithChildrenShortcut)
            continue;
        QVERIFY2(!keys.contains(entry->shortcut()), qPrintable(entry->text()));
        keys.append(entry->shortcut());
    }
}

void tst_kyworkstation::everyFieldHasAnAccessibleName()
{
    settings();
    for (const char* name :
         {"studyList", "logView", "logLevels", "logSearch", "progress", "scriptOutputText"})
        QVERIFY2(!mWindow->findChild<QWidget*>(name)->accessibleName().isEmpty(), name);
    for (QWidget* field : mWindow->findChild<QWidget*>("settings")->findChildren<QWidget*>()) {
        const bool isField =
            qobject_cast<QCheckBox*>(field) || qobject_cast<QAbstractSpinBox*>(field) ||
            qobject_cast<QToolButton*>(field) ||
            (qobject_cast<QLineEdit*>(field) && !qobject_cast<QAbstractSpinBox*>(field->parent()));
        if (isField && field->focusPolicy() != Qt::NoFocus && !field->objectName().startsWith("qt_"))
            QVERIFY2(!field->accessibleName().isEmpty(), field->metaObject()->className());
    }
}

#define REQUIRE_TRANSLATIONS()                                                                               \
    if (!QFile::exists(":/translations/kyscript_de.qm"))                                                     \
    QSKIP("built without lrelease: no translations")

void tst_kyworkstation::windowSpeaksTheLanguageOfTheUser()
{
    REQUIRE_TRANSLATIONS();
    stop();
    {
        const KyTranslations german(QLocale("de_DE"));
        start();
        QCOMPARE(mWindow->menuBar()->actions().first()->text(), QStringLiteral("&Datei"));
        QCOMPARE(studyList().model()->headerData(0, Qt::Horizontal).toString(), QStringLiteral("Patient"));
        QCOMPARE(studyList().model()->headerData(2, Qt::Horizontal).toString(),
                 QStringLiteral("Geburtsdatum"));
        action("Einstellungen ").trigger();
        const auto* tree = mWindow->findChild<QWidget*>("settings")->findChild<QTreeWidget*>();
        QVERIFY(!tree->findItems(QString::fromUtf8("Automatische Einrückung"),
                                 Qt::MatchExactly | Qt::MatchRecursive)
                     .isEmpty());
        QAction open;
        open.setData("German");
        connect(&open, &QAction::triggered, &KyScriptInterface::getInstance(QString()),
                &KyScriptInterface::showConsole);
        open.trigger();
        QWidget* window = windowTitled("Console[QJSEngine] (German)");
        QVERIFY(window);
        QCOMPARE(window->findChild<QPushButton*>("w_Evaluate")->text(), QStringLiteral("Auswerten"));
        QCOMPARE(evaluate(*window, "x.y"), QStringLiteral("Fehler (Zeile: 1): x is not defined\n%entry@:1"));
        stop();
    }
    start();
    QCOMPARE(mWindow->menuBar()->actions().first()->text(), QStringLiteral("&File"));
}

void tst_kyworkstation::firstLanguageOfTheUserCounts_data()
{
    QTest::addColumn<QStringList>("environment");
    QTest::addColumn<QString>("shown");
    const QString english = "A workstation for DICOM studies that scripts can extend.";
    const QString german =
        QString::fromUtf8("Ein Arbeitsplatz für DICOM-Untersuchungen, den Skripte erweitern");
    QTest::newRow("German") << QStringList{"LC_ALL=de_DE.UTF-8"} << german;
    QTest::newRow("Austrian") << QStringList{"LC_ALL=de_AT.UTF-8"} << german;
    QTest::newRow("English") << QStringList{"LC_ALL=en_GB.UTF-8"} << english;
    QTest::newRow("none") << QStringList{"LC_ALL=C.UTF-8"} << english;
    QTest::newRow("no translation") << QStringList{"LC_ALL=fr_FR.UTF-8"} << english;
    QTest::newRow("second choice") << QStringList{"LC_ALL=fr_FR.UTF-8", "LANGUAGE=fr:de:en"} << german;
    QTest::newRow("English before German") << QStringList{"LC_ALL=en_GB.UTF-8", "LANGUAGE=en:de"} << english;
}

void tst_kyworkstation::firstLanguageOfTheUserCounts()
{
    REQUIRE_TRANSLATIONS();
    QFETCH(QStringList, environment);
    QFETCH(QString, shown);
    QProcess program;
    QProcessEnvironment all = QProcessEnvironment::systemEnvironment();
    all.remove("LANGUAGE");
    for (const QString& variable : environment)
        all.insert(variable.section('=', 0, 0), variable.section('=', 1));
    program.setProcessEnvironment(all);
    program.start(KYWORKSTATION, {"--help"});
    QVERIFY(program.waitForFinished());
    const QString help = QString::fromUtf8(program.readAllStandardOutput());
    QVERIFY2(help.contains(shown), qPrintable(help));
}

void tst_kyworkstation::commandLineIsRead_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("read");
    QTest::newRow("studies") << QStringList{"-s", "/a", "--studies", "/b"} << "studies=/a,/b";
    QTest::newRow("folders without an option") << QStringList{"/c", "-s", "/a", "/d"} << "studies=/a,/c,/d";
    QTest::newRow("additional") << QStringList{"--additional", "/p"} << "additional=/p";
    QTest::newRow("profile") << QStringList{"--profile", "/x"} << "profile=/x";
    QTest::newRow("proxy") << QStringList{"--proxy", "host:8080"} << "proxy=host 8080";
    QTest::newRow("IPv6 proxy") << QStringList{"--proxy", "[::1]:80"} << "proxy=[::1] 80";
    QTest::newRow("property") << QStringList{"--property", "A.b=c=d"} << "property=A.b|c=d";
    QTest::newRow("log") << QStringList{"--log", "-"} << "log=-";
}

void tst_kyworkstation::commandLineIsRead()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, read);
    KyWorkstationOptions options;
    QString text;
    QCOMPARE(options.parse(QStringList{"kyworkstation"} + arguments, text),
             KyWorkstationOptions::Outcome::Run);
    QStringList found{"studies=" + options.host.studyFolders.join(','),
                      "additional=" + options.host.additionalFolders.join(','),
                      "profile=" + options.host.profile,
                      QStringLiteral("proxy=%1 %2").arg(options.host.proxyHost).arg(options.host.proxyPort),
                      "log=" + options.logFile};
    for (const auto& [id, value] : options.host.properties)
        found.append(QStringLiteral("property=%1|%2").arg(id, value));
    QVERIFY2(found.contains(read), qPrintable(found.join(' ')));
    QVERIFY(!options.host.profile.isEmpty());
}

void tst_kyworkstation::badCommandLineIsTold_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("unknown option") << QStringList{"--nonsense"};
    QTest::newRow("option without a value") << QStringList{"--studies"};
    QTest::newRow("property without a text") << QStringList{"--property", "A.b"};
    QTest::newRow("property without an id") << QStringList{"--property", "=b"};
    QTest::newRow("proxy without a port") << QStringList{"--proxy", "host"};
    QTest::newRow("port out of range") << QStringList{"--proxy", "host:70000"};
    QTest::newRow("port is no number") << QStringList{"--proxy", "host:http"};
}

void tst_kyworkstation::badCommandLineIsTold()
{
    QFETCH(QStringList, arguments);
    KyWorkstationOptions options;
    QString text;
    QCOMPARE(options.parse(QStringList{"kyworkstation"} + arguments, text),
             KyWorkstationOptions::Outcome::Bad);
    QVERIFY(!text.isEmpty());
    QVERIFY(!text.contains('\n'));
}

void tst_kyworkstation::programShowsHelpAndVersion()
{
    const Finished help = runProgram({"--help"});
    QCOMPARE(help.status, 0);
    for (const char* option : {"--studies", "--additional", "--archive", "--patient", "--profile",
                               "--property", "--log", "--proxy"})
        QVERIFY2(help.out.contains(option), option);
    const Finished version = runProgram({"--version"});
    QCOMPARE(version.status, 0);
    QVERIFY2(QRegularExpression("^kyworkstation \\d+\\.\\d+\\.\\d+\n$").match(version.out).hasMatch(),
             qPrintable(version.out));
}

void tst_kyworkstation::programRefusesABadCommandLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("option") << QStringList{"--nonsense"};
    QTest::newRow("log that can't be written") << QStringList{"--log", "/nonexistent/dir/log"};
    QTest::newRow("unknown property") << QStringList{"--property", "No.Such=1"};
}

void tst_kyworkstation::programRefusesABadCommandLine()
{
    QFETCH(QStringList, arguments);
    QTemporaryDir profile;
    const Finished finished = runProgram(QStringList{"--profile", profile.path()} + arguments);
    QCOMPARE(finished.status, 2);
    QVERIFY2(finished.err.contains("kyworkstation: "), qPrintable(finished.err));
}

void tst_kyworkstation::programStartsAndReadsStudies()
{
    QTemporaryDir folder;
    QFile text(folder.filePath("no-dicom.txt"));
    QVERIFY(text.open(QIODevice::WriteOnly) && text.write(QByteArray(1000, 'x')) == 1000);
    text.close();
    const QString log = folder.filePath("program.log");
    QTemporaryDir profile;
    QProcess program;
    program.start(KYWORKSTATION, {"--profile", profile.path(), "--log", log, "--studies", folder.path(),
                                  "--additional", mSample});
    QVERIFY(program.waitForStarted());
    const auto logged = [&] {
        QFile file(log);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    };
    // The folder of studies is read in the background, once the window's event loop runs.
    QTRY_VERIFY_WITH_TIMEOUT(logged().contains("no-dicom.txt"), 20'000);
    QCOMPARE(program.state(), QProcess::Running);
    program.kill();
    QVERIFY(program.waitForFinished());
}

KY_TEST_MAIN(tst_kyworkstation)
#include "tst_kyworkstation.moc"
