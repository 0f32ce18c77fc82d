// The viewers on the screen, driven by real events, their pixels compared with values computed here.

#include "HostSeries.h"

#include <support/ContractWatch.h>
#include <support/KyTest.h>

#include <common/KyHostPlatform.h>
#include <kybase/KyStudyMetrics.h>
#include <kybase/KyToolRegistry.h>
#include <kyworkstation/KyImageViewerWidget.h>
#include <kyworkstation/KyMainWindow.h>
#include <kyworkstation/KySeriesDrag.h>
#include <kyworkstation/KyStudyListModel.h>
#include <kyworkstation/KyStudyListView.h>
#include <kyworkstation/KyTranslations.h>
#include <kyworkstation/KyViewerArea.h>
#include <kyworkstation/KyViewerMenu.h>
#include <kyworkstation/KyWorkstationViewers.h>

#include <QAction>
#include <QApplication>
#include <QDropEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QSignalSpy>
#include <QSlider>
#include <QWheelEvent>

#include <cmath>

namespace {

/// What a window from 0 to 255 makes of a value.
QRgb grey(int inValue)
{
    const int level = std::clamp(inValue, 0, 255);
    return qRgb(level, level, level);
}

void wheel(QWidget* inWidget, int inNotches, Qt::KeyboardModifiers inModifiers = Qt::NoModifier,
           QPointF inPlace = QPointF())
{
    const QPointF place = inPlace.isNull() ? QRectF(inWidget->rect()).center() : inPlace;
    QWheelEvent event(place, inWidget->mapToGlobal(place), QPoint(), QPoint(0, 120 * inNotches), Qt::NoButton,
                      inModifiers, Qt::NoScrollPhase, false);
    QApplication::sendEvent(inWidget, &event);
}

void drag(QWidget* inWidget, Qt::MouseButton inButton, QPoint inFrom, QPoint inTo,
          Qt::KeyboardModifiers inModifiers = Qt::NoModifier)
{
    QTest::mousePress(inWidget, inButton, inModifiers, inFrom);
    const auto move = [&](QPoint inPlace) {
        QMouseEvent event(QEvent::MouseMove, inPlace, inWidget->mapToGlobal(QPointF(inPlace)), Qt::NoButton,
                          inButton, inModifiers);
        QApplication::sendEvent(inWidget, &event);
    };
    move((inFrom + inTo) / 2);
    move(inTo);
    QTest::mouseRelease(inWidget, inButton, inModifiers, inTo);
}

bool drop(QWidget* inWidget, const QMimeData& inData, Qt::KeyboardModifiers inModifiers = Qt::NoModifier)
{
    QDragEnterEvent enter(inWidget->rect().center(), Qt::CopyAction, &inData, Qt::LeftButton, inModifiers);
    QApplication::sendEvent(inWidget, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent event(QPointF(inWidget->rect().center()), Qt::CopyAction, &inData, Qt::LeftButton,
                     inModifiers);
    QApplication::sendEvent(inWidget, &event);
    return event.isAccepted();
}

} // namespace

Q_DECLARE_METATYPE(std::function<void(QWidget*)>)

class tst_KyViewerArea : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void pixelsAreThoseOfTheSlice_data();
    void pixelsAreThoseOfTheSlice();
    void fusedPixelsAreMixed();
    void pixelsFollowTheWindow();
    void invertedPixelsAreInverted();
    void pixelsOfMissingImagesAreMarked();
    void imageKeepsItsProportions();

    void wheelScrolls();
    void partsOfANotchAddUp();
    void keysScroll_data();
    void keysScroll();
    void keysTurnInvertAndReset();
    void dragChangesTheWindow_data();
    void dragChangesTheWindow();
    void windowOfFractionsIsDraggedFinely();
    void clickWithATremblingHandChangesNothing();
    void dragPans_data();
    void dragPans();
    void wheelZoomsAroundThePointer();
    void keysAndDragZoom();

    void clickActivates();
    void activeViewerIsFramed();
    void doubleClickShowsOneAlone();
    void rightClickAsksForTheMenu();
    void layoutsShowTheirViewers_data();
    void layoutsShowTheirViewers();
    void viewerMayGoInItsOwnEvent_data();
    void viewerMayGoInItsOwnEvent();
    void keysGoOnInTheActiveViewer();

    void droppedSeriesOpens();
    void droppedSeriesFusesWithControl();
    void otherDropsAreRefused();
    void dropTargetIsFramed();
    void weightIsSetByItsSlider();

    void textsAreDrawn();
    void hintIsDrawnAndTakenAway();
    void emptyViewerSaysHowToFillIt();
    void messageStandsInsteadOfTheImage();

    void menuSetsTheLayout();
    void menuTurnsPlanes();
    void menuSetsWindows();
    void menuFuses();
    void menuOfAnEmptyViewerIsDisabled();
    void sessionIsFollowed();
    void everythingIsDrawnWhileASeriesIsRead();
    void viewersWithoutAPlatformAreEmpty();
    void viewersSpeakTheLanguageOfTheUser();

    void studyListShowsSeriesBelowTheirStudies();
    void studyListGivesSeriesToDrags();
    void seriesOpensFromTheStudyList();
    void openedStudiesFillTheViewers();
    void toolsSetTheLayout();
    void menuStandsInTheMenuBar();
    void everyEntryHasAKey();
    void readingTimeIsCounted();

private:
    KyViewerLayer layer(std::size_t inSeries = 0) { return {.study = mStudies.at(0), .series = inSeries}; }
    KyImageViewerWidget& widget(int inPlace = 0) { return *mArea->widgetAt(inPlace); }
    KyImageViewer& viewer(int inPlace = 0) { return *mArea->viewers().viewer(inPlace); }
    /// Opens a series and waits for it; with a size in which a pixel of the image is one of the screen.
    void open(std::size_t inSeries = 0);
    void waitForAll();
    QImage grabbed(int inPlace = 0)
    {
        return widget(inPlace).grab().toImage().convertToFormat(QImage::Format_RGB32);
    }
    QAction* entry(QMenu& inMenu, const QString& inText);

    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyHostPlatform> mPlatform;
    std::unique_ptr<HostSeries> mFiles;
    std::unique_ptr<KyViewerArea> mArea;
    KyLoadHelper::Exams mStudies;
};

void tst_KyViewerArea::init()
{
    mContracts = std::make_unique<ContractWatch>();
    mPlatform = std::make_unique<KyHostPlatform>(KyHostOptions());
    mFiles = std::make_unique<HostSeries>();
    mFiles->add(ctMaker());
    mFiles->add(petMaker());
    mStudies = mFiles->open();
    mArea = std::make_unique<KyViewerArea>();
    mArea->resize(640, 480);
    mArea->show();
    QVERIFY(QTest::qWaitForWindowExposed(mArea.get()));
}

void tst_KyViewerArea::cleanup()
{
    mArea.reset();
    mStudies.clear();
    mPlatform.reset();
    mFiles.reset();
    mContracts.reset();
}

void tst_KyViewerArea::waitForAll()
{
    QTRY_VERIFY_WITH_TIMEOUT(
        [&] {
            for (int place = 0; place < mArea->viewers().count(); ++place) {
                for (int i = 0; viewer(place).seriesVolume(i); ++i) {
                    if (viewer(place).seriesVolume(i)->isLoading())
                        return false;
                }
            }
            return true;
        }(),
        20000);
}

void tst_KyViewerArea::open(std::size_t inSeries)
{
    mArea->open(layer(inSeries));
    waitForAll();
}

QAction* tst_KyViewerArea::entry(QMenu& inMenu, const QString& inText)
{
    Q_EMIT inMenu.aboutToShow();
    for (QAction* action : inMenu.actions()) {
        if (action->text().remove('&') == inText)
            return action;
    }
    return nullptr;
}

void tst_KyViewerArea::pixelsAreThoseOfTheSlice_data()
{
    QTest::addColumn<int>("orientation");
    QTest::addColumn<int>("number");
    QTest::newRow("axial") << int(OvSlice::Axial) << 3;
    QTest::newRow("axial, last") << int(OvSlice::Axial) << 9;
    QTest::newRow("sagittal") << int(OvSlice::Sagittal) << 7;
    QTest::newRow("coronal") << int(OvSlice::Coronal) << 2;
}

/// At 40 times the size each pixel's middle has the pure value, whatever lies between is interpolated.
void tst_KyViewerArea::pixelsAreThoseOfTheSlice()
{
    QFETCH(int, orientation);
    QFETCH(int, number);
    open();
    viewer().setOrientation(OvSlice::Orientation(orientation));
    viewer().scrollTo(number);
    const OvPlane plane = viewer().imageSlice()->plane();
    mArea->resize(plane.width() * 40, plane.height() * 40);
    const QImage picture = grabbed();
    QCOMPARE(widget().imageRect(), QRectF(picture.rect()));
    for (int y = 4; y < plane.height() - 3; ++y) {
        for (int x = 4; x < plane.width() - 4; ++x) {
            // The values written out, by the place that the eye sees there.
            const int head = 9 - y;
            const int value = orientation == OvSlice::Axial      ? 10 * x + 3 * y + 7 * number
                              : orientation == OvSlice::Sagittal ? 10 * number + 3 * x + 7 * head
                                                                 : 10 * x + 3 * number + 7 * head;
            const QRgb seen = picture.pixel(x * 40 + 20, y * 40 + 20);
            QVERIFY2(std::abs(qRed(seen) - qRed(grey(value))) <= 2 && qRed(seen) == qGreen(seen),
                     qPrintable(QString("%1,%2: %3, not %4").arg(x).arg(y).arg(qRed(seen)).arg(value)));
        }
    }
}

void tst_KyViewerArea::fusedPixelsAreMixed()
{
    open();
    viewer().fuse(layer(1));
    waitForAll();
    viewer().scrollTo(4);
    viewer().setFusionWeight(0.25);
    mArea->resize(16 * 40, 12 * 40);
    const QImage picture = grabbed();
    // Both volumes have the same value at a place; the second one's window spans 0 to 233.
    for (int x = 4; x < 12; ++x) {
        const int value = 10 * x + 3 * 6 + 7 * 4;
        const double hot = std::floor(std::clamp(value / 233.0, 0.0, 1.0) * 255 + 0.5) / 255;
        const int red = int(std::min(hot / 0.4, 1.0) * 255 + 0.5);
        const int expected = (std::clamp(value, 0, 255) * 192 + red * 64) >> 8;
        const int seen = qRed(picture.pixel(x * 40 + 20, 6 * 40 + 20));
        QVERIFY2(std::abs(seen - expected) <= 2,
                 qPrintable(QString("%1: %2, not %3").arg(x).arg(seen).arg(expected)));
    }
}

void tst_KyViewerArea::pixelsFollowTheWindow()
{
    open();
    mArea->resize(16 * 40, 12 * 40);
    viewer().scrollTo(0);
    viewer().setWindow({.centre = 80, .width = 41, .function = OvWindow::Linear});
    const QImage picture = grabbed();
    for (int x = 4; x < 12; ++x) {
        const double part = std::clamp((10 * x + 18 - 79.5) / 40 + 0.5, 0.0, 1.0);
        QVERIFY(std::abs(qRed(picture.pixel(x * 40 + 20, 6 * 40 + 20)) - int(part * 255 + 0.5)) <= 2);
    }
}

void tst_KyViewerArea::invertedPixelsAreInverted()
{
    open();
    mArea->resize(16 * 40, 12 * 40);
    const int before = qRed(grabbed().pixel(8 * 40 + 20, 6 * 40 + 20));
    viewer().setInverted(true);
    QVERIFY(std::abs(qRed(grabbed().pixel(8 * 40 + 20, 6 * 40 + 20)) - (255 - before)) <= 2);
}

void tst_KyViewerArea::pixelsOfMissingImagesAreMarked()
{
    DicomSeriesMaker gap = ctMaker();
    gap.series = "3";
    gap.images = 9;
    gap.adjust = [](int inImage, DcmDataset& ioSet) {
        const double z = inImage < 4 ? inImage : inImage + 1;
        DicomSeriesMaker::put(ioSet, DCM_ImagePositionPatient, DicomSeriesMaker::decimals({0, 0, z}));
    };
    mFiles->add(gap);
    mStudies = mFiles->open();
    open(2);
    viewer().setOrientation(OvSlice::Coronal);
    mArea->resize(16 * 40, 10 * 40);
    QCOMPARE(viewer().notices(), QStringList("1 image is missing between the others"));
    // Below the notice: the plane at 4 mm is the sixth from the top.
    QCOMPARE(grabbed().pixel(4 * 40 + 20, 5 * 40 + 20), QRgb(OvPlaneRenderer::MissingColour));
}

void tst_KyViewerArea::imageKeepsItsProportions()
{
    DicomSeriesMaker flat = ctMaker();
    flat.series = "3";
    flat.rowSpacing = 2;
    mFiles->add(flat);
    mStudies = mFiles->open();
    open(2);
    mArea->resize(640, 480);
    // 16 mm by 24 mm.
    QCOMPARE(widget().imageRect(), QRectF(160, 0, 320, 480));
    viewer().setView({.zoom = 2, .pan = {0.1, -0.2}});
    QCOMPARE(widget().imageRect(), QRectF(320 + 64 - 320, 240 - 96 - 480, 640, 960));
}

void tst_KyViewerArea::wheelScrolls()
{
    open();
    QCOMPARE(viewer().planeNumber(), 5);
    wheel(&widget(), -1);
    QCOMPARE(viewer().planeNumber(), 6);
    wheel(&widget(), 3);
    QCOMPARE(viewer().planeNumber(), 3);
    wheel(&widget(), 100);
    QCOMPARE(viewer().planeNumber(), 0);
    wheel(&widget(), -100);
    QCOMPARE(viewer().planeNumber(), 9);
}

void tst_KyViewerArea::partsOfANotchAddUp()
{
    open();
    const auto turn = [&](int inAngle) {
        const QPointF place(10, 10);
        QWheelEvent event(place, widget().mapToGlobal(place), QPoint(), QPoint(0, inAngle), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&widget(), &event);
        return viewer().planeNumber();
    };
    QCOMPARE(turn(-50), 5);
    QCOMPARE(turn(-50), 5);
    QCOMPARE(turn(-50), 6);
    QCOMPARE(turn(30), 6);
    QCOMPARE(turn(-120), 7);
}

void tst_KyViewerArea::keysScroll_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("number");
    QTest::newRow("Up") << int(Qt::Key_Up) << 4;
    QTest::newRow("Left") << int(Qt::Key_Left) << 4;
    QTest::newRow("Down") << int(Qt::Key_Down) << 6;
    QTest::newRow("Right") << int(Qt::Key_Right) << 6;
    QTest::newRow("Page Up") << int(Qt::Key_PageUp) << 0;
    QTest::newRow("Page Down") << int(Qt::Key_PageDown) << 9;
    QTest::newRow("Home") << int(Qt::Key_Home) << 0;
    QTest::newRow("End") << int(Qt::Key_End) << 9;
    QTest::newRow("another") << int(Qt::Key_X) << 5;
}

void tst_KyViewerArea::keysScroll()
{
    QFETCH(int, key);
    open();
    QTest::keyClick(&widget(), Qt::Key(key));
    QTEST(viewer().planeNumber(), "number");
}

void tst_KyViewerArea::keysTurnInvertAndReset()
{
    open();
    QTest::keyClick(&widget(), Qt::Key_S);
    QCOMPARE(viewer().orientation(), OvSlice::Sagittal);
    QTest::keyClick(&widget(), Qt::Key_C);
    QCOMPARE(viewer().orientation(), OvSlice::Coronal);
    QTest::keyClick(&widget(), Qt::Key_A);
    QCOMPARE(viewer().orientation(), OvSlice::Axial);
    QTest::keyClick(&widget(), Qt::Key_I);
    QVERIFY(viewer().isInverted());
    QTest::keyClick(&widget(), Qt::Key_I);
    QVERIFY(!viewer().isInverted());
    QTest::keyClick(&widget(), Qt::Key_Plus);
    viewer().setWindow({.centre = 1, .width = 2, .function = OvWindow::Linear});
    QTest::keyClick(&widget(), Qt::Key_R);
    QCOMPARE(viewer().view(), KyImageViewer::View());
    QVERIFY(!viewer().hasOwnWindow());
}

void tst_KyViewerArea::dragChangesTheWindow_data()
{
    QTest::addColumn<QPoint>("distance");
    QTest::addColumn<double>("centre");
    QTest::addColumn<double>("width");
    QTest::newRow("right") << QPoint(50, 0) << 128.0 << 306.0;
    QTest::newRow("left") << QPoint(-50, 0) << 128.0 << 206.0;
    QTest::newRow("far left") << QPoint(-300, 0) << 128.0 << 1.0;
    QTest::newRow("down") << QPoint(0, 30) << 98.0 << 256.0;
    QTest::newRow("up") << QPoint(0, -30) << 158.0 << 256.0;
    QTest::newRow("both") << QPoint(20, -20) << 148.0 << 276.0;
}

void tst_KyViewerArea::dragChangesTheWindow()
{
    QFETCH(QPoint, distance);
    open();
    const QPoint from(320, 240);
    drag(&widget(), Qt::LeftButton, from, from + distance);
    QTEST(viewer().window(0).centre, "centre");
    QTEST(viewer().window(0).width, "width");
    QVERIFY(viewer().hasOwnWindow());
    QCOMPARE(viewer().planeNumber(), 5);
}

void tst_KyViewerArea::windowOfFractionsIsDraggedFinely()
{
    open();
    viewer().setWindow({.centre = 0.5, .width = 1, .function = OvWindow::LinearExact});
    drag(&widget(), Qt::LeftButton, {300, 200}, {300 + 64, 200 - 64});
    QCOMPARE(viewer().window(0).width, 1.25);
    QCOMPARE(viewer().window(0).centre, 0.75);
    drag(&widget(), Qt::LeftButton, {600, 200}, {0, 200});
    QVERIFY(viewer().window(0).width > 0 && viewer().window(0).width < 0.01);
}

void tst_KyViewerArea::clickWithATremblingHandChangesNothing()
{
    open();
    drag(&widget(), Qt::LeftButton, {300, 200}, {302, 201});
    QVERIFY(!viewer().hasOwnWindow());
}

void tst_KyViewerArea::dragPans_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<int>("modifiers");
    QTest::newRow("middle button") << int(Qt::MiddleButton) << int(Qt::NoModifier);
    QTest::newRow("Shift") << int(Qt::LeftButton) << int(Qt::ShiftModifier);
}

void tst_KyViewerArea::dragPans()
{
    QFETCH(int, button);
    QFETCH(int, modifiers);
    open();
    drag(&widget(), Qt::MouseButton(button), {300, 200}, {364, 176}, Qt::KeyboardModifiers(modifiers));
    QVERIFY(std::fabs(viewer().view().pan.x() - 0.1) < 1e-9);
    QVERIFY(std::fabs(viewer().view().pan.y() + 0.05) < 1e-9);
    QVERIFY(!viewer().hasOwnWindow());
}

void tst_KyViewerArea::wheelZoomsAroundThePointer()
{
    open();
    mArea->resize(640, 480);
    const QPointF place(480, 120);
    const auto under = [&] {
        const QRectF image = widget().imageRect();
        return QPointF((place.x() - image.x()) / image.width(), (place.y() - image.y()) / image.height());
    };
    const QPointF before = under();
    wheel(&widget(), 2, Qt::ControlModifier, place);
    QVERIFY(std::fabs(viewer().view().zoom - 1.44) < 1e-9);
    QVERIFY((under() - before).manhattanLength() < 1e-9);
    QCOMPARE(viewer().planeNumber(), 5);
    wheel(&widget(), -2, Qt::ControlModifier, place);
    QVERIFY(std::fabs(viewer().view().zoom - 1) < 1e-9);
    QVERIFY(viewer().view().pan.manhattanLength() < 1e-9);
    wheel(&widget(), 1000, Qt::ControlModifier, place);
    QCOMPARE(viewer().view().zoom, KyImageViewer::LargestZoom);
}

void tst_KyViewerArea::keysAndDragZoom()
{
    open();
    QTest::keyClick(&widget(), Qt::Key_Plus);
    QVERIFY(std::fabs(viewer().view().zoom - 1.2) < 1e-9);
    QTest::keyClick(&widget(), Qt::Key_Minus);
    QVERIFY(std::fabs(viewer().view().zoom - 1) < 1e-9);
    drag(&widget(), Qt::LeftButton, {320, 240}, {320, 140}, Qt::ControlModifier);
    QVERIFY(std::fabs(viewer().view().zoom - 2) < 1e-9);
    QVERIFY(viewer().view().pan.manhattanLength() < 1e-9);
}

void tst_KyViewerArea::clickActivates()
{
    mArea->viewers().setLayout("2x2");
    QCOMPARE(mArea->viewers().activeViewer(), &viewer(0));
    QTest::mouseClick(&widget(2), Qt::LeftButton);
    QCOMPARE(mArea->viewers().activeViewer(), &viewer(2));
    wheel(&widget(1), 1);
    QCOMPARE(mArea->viewers().activeViewer(), &viewer(1));
    QTest::mouseClick(&widget(3), Qt::RightButton);
    QCOMPARE(mArea->viewers().activeViewer(), &viewer(3));
}

void tst_KyViewerArea::activeViewerIsFramed()
{
    mArea->viewers().setLayout("1x2");
    KyViewerManager::getInstance()->setActiveViewer(&viewer(1));
    const QColor highlight = widget(1).palette().color(QPalette::Highlight);
    QCOMPARE(QColor(grabbed(1).pixel(0, 50)), highlight);
    QVERIFY(QColor(grabbed(0).pixel(0, 50)) != highlight);
    QVERIFY(widget(1).isActive() && !widget(0).isActive());
    // One alone needs no frame to tell it from others.
    mArea->viewers().setLayout("1x1");
    QVERIFY(!widget(0).isActive());
}

void tst_KyViewerArea::doubleClickShowsOneAlone()
{
    mArea->viewers().setLayout("2x2");
    viewer(2).open(layer(1));
    waitForAll();
    QTest::mouseDClick(&widget(2), Qt::LeftButton);
    QTRY_COMPARE(mArea->viewers().layout(), "1x1");
    QCOMPARE(viewer(0).layers().size(), size_t(1));
    QCOMPARE(viewer(0).layers().at(0).series, size_t(1));
    QTest::mouseDClick(&widget(0), Qt::LeftButton);
    QTRY_COMPARE(mArea->viewers().layout(), "2x2");
    QVERIFY(!mArea->viewers().activeViewer()->isEmpty());
}

void tst_KyViewerArea::rightClickAsksForTheMenu()
{
    QSignalSpy wanted(mArea.get(), &KyViewerArea::menuWanted);
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 6), widget().mapToGlobal(QPoint(5, 6)));
    QApplication::sendEvent(&widget(), &event);
    QCOMPARE(wanted.size(), 1);
    QCOMPARE(wanted[0][0].toPoint(), widget().mapToGlobal(QPoint(5, 6)));
}

void tst_KyViewerArea::layoutsShowTheirViewers_data()
{
    QTest::addColumn<QString>("layout");
    QTest::addColumn<QList<QPoint>>("places");
    QTest::newRow("1x1") << "1x1" << QList<QPoint>{{0, 0}};
    QTest::newRow("1x2") << "1x2" << QList<QPoint>{{0, 0}, {1, 0}};
    QTest::newRow("2x2") << "2x2" << QList<QPoint>{{0, 0}, {1, 0}, {0, 1}, {1, 1}};
}

void tst_KyViewerArea::layoutsShowTheirViewers()
{
    QFETCH(QString, layout);
    QFETCH(QList<QPoint>, places);
    for (const char* before : {"2x2", "1x1", "1x2"}) {
        mArea->viewers().setLayout(before);
        mArea->viewers().setLayout(layout);
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(mArea->findChildren<KyImageViewerWidget*>().size(), places.size());
        for (int i = 0; i < places.size(); ++i) {
            const QPoint middle = widget(i).geometry().center();
            QCOMPARE(QPoint(middle.x() / 321, middle.y() / 241), places[i] * (places.size() == 1 ? 0 : 1));
            QCOMPARE(viewer(i).widget(), &widget(i));
            QVERIFY(widget(i).isVisible());
            QVERIFY(!widget(i).accessibleName().isEmpty());
        }
    }
}

void tst_KyViewerArea::viewerMayGoInItsOwnEvent_data()
{
    QTest::addColumn<std::function<void(QWidget*)>>("work");
    using Work = std::function<void(QWidget*)>;
    const auto row = [](const char* inName, const Work& inWork) { QTest::newRow(inName) << inWork; };
    row("click", [](QWidget* w) { QTest::mouseClick(w, Qt::LeftButton); });
    row("drag", [](QWidget* w) { drag(w, Qt::LeftButton, {50, 50}, {90, 90}); });
    row("pan", [](QWidget* w) { drag(w, Qt::MiddleButton, {50, 50}, {90, 90}); });
    row("zoom", [](QWidget* w) { drag(w, Qt::LeftButton, {50, 50}, {90, 90}, Qt::ControlModifier); });
    row("double click", [](QWidget* w) { QTest::mouseDClick(w, Qt::LeftButton); });
    row("wheel", [](QWidget* w) { wheel(w, -1); });
    row("wheel with Ctrl", [](QWidget* w) { wheel(w, -1, Qt::ControlModifier); });
    row("key", [](QWidget* w) { QTest::keyClick(w, Qt::Key_Down); });
    row("key for an orientation", [](QWidget* w) { QTest::keyClick(w, Qt::Key_S); });
    row("menu", [](QWidget* w) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 6), w->mapToGlobal(QPoint(5, 6)));
        QApplication::sendEvent(w, &event);
    });
    row("focus", [](QWidget* w) { w->setFocus(Qt::TabFocusReason); });
    row("slider", [](QWidget* w) { w->findChild<QSlider*>()->setValue(7); });
    row("drop", [](QWidget* w) {
        const auto loader = KySessionContext::currentInstance()->component<KyLoadHelper>(true);
        const std::unique_ptr<QMimeData> data(
            KySeriesDrag::mimeData({.study = loader->primaryExams().at(0)}));
        drop(w, *data);
    });
}

/// As when a script follows the active viewer, or what is on show, and sets another layout.
void tst_KyViewerArea::viewerMayGoInItsOwnEvent()
{
    QFETCH(std::function<void(QWidget*)>, work);
    KyViewerManager& manager = *KyViewerManager::getInstance();
    for (const bool isActive : {false, true}) {
        mArea->viewers().setLayout("2x2");
        viewer(2).open(layer(0));
        waitForAll();
        viewer(2).fuse(layer(1));
        waitForAll();
        manager.setActiveViewer(&viewer(isActive ? 2 : 0));
        const QPointer<QWidget> shown = &widget(2);
        const auto shrink = [&] { mArea->viewers().setLayout("1x1"); };
        connect(&manager, &KyViewerManager::activeViewerChanged, this, shrink);
        connect(&manager, &KyViewerManager::contentChanged, this, shrink);
        work(shown);
        manager.disconnect(this);
        if (mArea->viewers().count() == 1) {
            QCOMPARE(manager.numViewers(), 1);
            QVERIFY(mArea->viewers().activeViewer());
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QVERIFY(!shown);
        }
        QVERIFY(!grabbed().isNull());
    }
}

void tst_KyViewerArea::keysGoOnInTheActiveViewer()
{
    mArea->viewers().setLayout("2x2");
    mArea->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(mArea.get()));
    widget(1).setFocus(Qt::TabFocusReason);
    QCOMPARE(mArea->viewers().activeViewer(), &viewer(1));
    mArea->viewers().setLayout("1x2");
    QCOMPARE(mArea->viewers().activeViewer(), &viewer(1));
    QVERIFY(widget(1).hasFocus());
    mArea->viewers().setLayout("1x1");
    QVERIFY(widget(0).hasFocus());
}

void tst_KyViewerArea::droppedSeriesOpens()
{
    mArea->viewers().setLayout("1x2");
    const std::unique_ptr<QMimeData> data(KySeriesDrag::mimeData(layer(1)));
    QVERIFY(drop(&widget(1), *data));
    QVERIFY(viewer(0).isEmpty());
    QCOMPARE(viewer(1).layers().at(0).series, size_t(1));
    QCOMPARE(mArea->viewers().activeViewer(), &viewer(1));
}

void tst_KyViewerArea::droppedSeriesFusesWithControl()
{
    open();
    const std::unique_ptr<QMimeData> data(KySeriesDrag::mimeData(layer(1)));
    QVERIFY(drop(&widget(), *data, Qt::ControlModifier));
    QCOMPARE(viewer().layers().size(), size_t(2));
    QCOMPARE(viewer().layers().at(1).series, size_t(1));
    viewer().open({});
    QVERIFY(drop(&widget(), *data, Qt::ControlModifier));
    QCOMPARE(viewer().layers().size(), size_t(1));
}

void tst_KyViewerArea::otherDropsAreRefused()
{
    QMimeData other;
    other.setText("1.2.3.1\n1.2.3.1.1");
    QVERIFY(!drop(&widget(), other));
    for (const char* bytes :
         {"", "1.2.3.1", "1.2.3.1\n", "9.9\n1.2.3.1.1", "1.2.3.1\n9.9", "1.2.3.1\n1.2.3.1.1\nx"})
    {
        QMimeData wrong;
        wrong.setData(KySeriesDrag::MimeType, bytes);
        QVERIFY(!KySeriesDrag::layer(wrong).isValid());
        QVERIFY(!drop(&widget(), wrong));
    }
    QVERIFY(viewer().isEmpty());
    QVERIFY(!KySeriesDrag::mimeData({}));
    // A series whose study has ended while it was dragged.
    const std::unique_ptr<QMimeData> data(KySeriesDrag::mimeData(layer()));
    KySessionContext::currentInstance()->component<KyLoadHelper>(true)->setPrimaryExams({});
    QVERIFY(!drop(&widget(), *data));
}

void tst_KyViewerArea::dropTargetIsFramed()
{
    const std::unique_ptr<QMimeData> data(KySeriesDrag::mimeData(layer()));
    const QRgb before = grabbed().pixel(0, 50);
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&widget(), &enter);
    QVERIFY(grabbed().pixel(0, 50) != before);
    QDragLeaveEvent leave;
    QApplication::sendEvent(&widget(), &leave);
    QCOMPARE(grabbed().pixel(0, 50), before);
}

void tst_KyViewerArea::weightIsSetByItsSlider()
{
    open();
    auto* slider = widget().findChild<QSlider*>("fusionWeight");
    QVERIFY(slider->isHidden());
    viewer().fuse(layer(1));
    QVERIFY(!slider->isHidden());
    QCOMPARE(slider->value(), 50);
    QVERIFY(!slider->accessibleName().isEmpty());
    slider->setFocus();
    QTest::keyClick(slider, Qt::Key_Home);
    QCOMPARE(viewer().fusionWeight(), 0.0F);
    QTest::keyClick(slider, Qt::Key_End);
    QCOMPARE(viewer().fusionWeight(), 1.0F);
    viewer().setFusionWeight(0.3);
    QCOMPARE(slider->value(), 30);
    viewer().fuse({});
    QVERIFY(slider->isHidden());
}

/// Pixels brighter than anything that the black background has.
int brightPixels(const QImage& inPicture, const QRect& inPart)
{
    int count = 0;
    for (int y = inPart.top(); y <= inPart.bottom(); ++y) {
        for (int x = inPart.left(); x <= inPart.right(); ++x)
            count += qGray(inPicture.pixel(x, y)) > 100 ? 1 : 0;
    }
    return count;
}

void tst_KyViewerArea::textsAreDrawn()
{
    open();
    viewer().setWindow({.centre = 5000, .width = 2, .function = OvWindow::Linear});
    const QImage picture = grabbed();
    QVERIFY(brightPixels(picture, QRect(5, 5, 120, 60)) > 50);      // patient
    QVERIFY(brightPixels(picture, QRect(515, 5, 120, 60)) > 50);    // study
    QVERIFY(brightPixels(picture, QRect(5, 420, 120, 55)) > 50);    // plane
    QVERIFY(brightPixels(picture, QRect(5, 225, 20, 30)) > 5);      // R
    QVERIFY(brightPixels(picture, QRect(200, 100, 200, 200)) == 0); // the image is black in this window
}

void tst_KyViewerArea::hintIsDrawnAndTakenAway()
{
    open();
    viewer().setWindow({.centre = 5000, .width = 2, .function = OvWindow::Linear});
    const QRect middle(220, 15, 200, 60);
    const int before = brightPixels(grabbed(), middle);
    viewer().contextToolBar()->setDisplayHint("Measure the nodule in the left lung");
    QVERIFY(brightPixels(grabbed(), middle) > before + 50);
    viewer().contextToolBar()->setDisplayHint("");
    QCOMPARE(brightPixels(grabbed(), middle), before);
}

void tst_KyViewerArea::emptyViewerSaysHowToFillIt()
{
    QVERIFY(brightPixels(grabbed(), QRect(100, 200, 440, 80)) > 50);
    QVERIFY(widget().imageRect().isNull());
    drag(&widget(), Qt::LeftButton, {300, 200}, {350, 250});
    wheel(&widget(), 1);
    wheel(&widget(), 1, Qt::ControlModifier);
    QVERIFY(viewer().isEmpty());
}

void tst_KyViewerArea::messageStandsInsteadOfTheImage()
{
    DicomSeriesMaker broken = ctMaker();
    broken.series = "3";
    broken.adjust = [](int inImage, DcmDataset& ioSet) {
        if (inImage == 5)
            DicomSeriesMaker::putPixels(ioSet, 2, 2, [](int, int) { return 0; });
    };
    mFiles->add(broken);
    mStudies = mFiles->open();
    open(2);
    const QImage picture = grabbed();
    QCOMPARE(picture.pixel(320, 100), QRgb(0xFF000000));
    QVERIFY(brightPixels(picture, QRect(100, 200, 440, 80)) > 50);
}

void tst_KyViewerArea::menuSetsTheLayout()
{
    KyViewerMenu menu(mArea->viewers(), nullptr);
    QVERIFY(entry(menu, "One Viewer")->isChecked());
    entry(menu, "Four Viewers")->trigger();
    QCOMPARE(mArea->viewers().layout(), "2x2");
    QVERIFY(entry(menu, "Four Viewers")->isChecked());
    entry(menu, "Two Viewers")->trigger();
    QCOMPARE(mArea->viewers().layout(), "1x2");
    entry(menu, "One Viewer")->trigger();
    QCOMPARE(mArea->viewers().layout(), "1x1");
}

void tst_KyViewerArea::menuTurnsPlanes()
{
    open();
    KyViewerMenu menu(mArea->viewers(), nullptr);
    QVERIFY(entry(menu, "Axial")->isChecked());
    entry(menu, "Sagittal")->trigger();
    QCOMPARE(viewer().orientation(), OvSlice::Sagittal);
    QVERIFY(entry(menu, "Sagittal")->isChecked());
    QVERIFY(entry(menu, "Coronal")->isEnabled());
    entry(menu, "Invert")->trigger();
    QVERIFY(viewer().isInverted());
    QVERIFY(entry(menu, "Invert")->isChecked());
    entry(menu, "Reset")->trigger();
    QVERIFY(!viewer().isInverted());
    entry(menu, "Empty the Viewer")->trigger();
    QVERIFY(viewer().isEmpty());
}

void tst_KyViewerArea::menuSetsWindows()
{
    open();
    KyViewerMenu menu(mArea->viewers(), nullptr);
    QMenu& windows = *entry(menu, "Window")->menu();
    entry(windows, "Lung")->trigger();
    QCOMPARE(viewer().window(0).centre, -600.0);
    QCOMPARE(viewer().window(0).width, 1600.0);
    entry(windows, "Soft Tissue")->trigger();
    QCOMPARE(viewer().window(0).width, 400.0);
    entry(windows, "All Values")->trigger();
    QCOMPARE(viewer().window(0), OvWindow::spanning(0, 10 * 15 + 3 * 11 + 7 * 9));
    entry(windows, "Of the Image")->trigger();
    QVERIFY(!viewer().hasOwnWindow());
}

void tst_KyViewerArea::menuFuses()
{
    DicomSeriesMaker other = petMaker();
    other.study = "7";
    other.adjust = [](int, DcmDataset& ioSet) { DicomSeriesMaker::put(ioSet, DCM_PatientID, "P2"); };
    mFiles->add(other);
    mStudies = mFiles->open();
    open();
    KyViewerMenu menu(mArea->viewers(), nullptr);
    QMenu& fusion = *entry(menu, "Fuse With")->menu();
    QVERIFY(!entry(fusion, "Nothing")->isEnabled());
    // The patient's series, not those of others.
    QCOMPARE(fusion.actions().size(), 2 + 2);
    fusion.actions().at(3)->trigger();
    QCOMPARE(viewer().layers().at(1).series, size_t(1));
    QVERIFY(entry(fusion, "Nothing")->isEnabled());
    entry(fusion, "Nothing")->trigger();
    QCOMPARE(viewer().layers().size(), size_t(1));
}

void tst_KyViewerArea::menuOfAnEmptyViewerIsDisabled()
{
    KyViewerMenu menu(mArea->viewers(), nullptr);
    for (const char* text : {"Axial", "Sagittal", "Coronal", "Window", "Invert", "Fuse With", "Reset"})
        QVERIFY2(!entry(menu, text)->isEnabled(), text);
    KyViewerManager::getInstance()->setActiveViewer(nullptr);
    QVERIFY(!entry(menu, "Reset")->isEnabled());
    entry(menu, "Reset")->trigger();
}

void tst_KyViewerArea::sessionIsFollowed()
{
    mArea->viewers().setLayout("1x2");
    mArea->followSession();
    QCOMPARE(viewer(0).layers().at(0).series, size_t(0));
    QCOMPARE(viewer(1).layers().at(0).series, size_t(1));
    viewer(1).open({});
    mArea->followSession();
    QVERIFY(viewer(1).isEmpty());
    KySessionContext::currentInstance()->component<KyLoadHelper>(true)->setPrimaryExams({});
    mArea->followSession();
    QVERIFY(viewer(0).isEmpty());
}

void tst_KyViewerArea::everythingIsDrawnWhileASeriesIsRead()
{
    DicomSeriesMaker large = ctMaker();
    large.series = "3";
    large.images = 60;
    large.columns = 256;
    large.rows = 256;
    mFiles->add(large);
    mStudies = mFiles->open();
    mArea->open(layer(2));
    int pictures = 0;
    do {
        QVERIFY(!grabbed().isNull());
        wheel(&widget(), -1);
        QCoreApplication::processEvents();
        ++pictures;
    } while (viewer().seriesVolume(0)->isLoading());
    QVERIFY(pictures > 0);
    viewer().scrollTo(59);
    const QImage picture = grabbed();
    const QPointF last = widget().imageRect().center();
    QCOMPARE(QColor(picture.pixel(last.toPoint())).lightness() > 100, true);
}

void tst_KyViewerArea::viewersWithoutAPlatformAreEmpty()
{
    mArea.reset();
    mPlatform.reset();
    KyViewerArea area;
    area.resize(300, 200);
    area.followSession();
    QVERIFY(!area.grab().isNull());
    QTest::mouseClick(area.widgetAt(0), Qt::LeftButton);
    KyViewerMenu menu(area.viewers(), nullptr);
    QVERIFY(!entry(menu, "Reset")->isEnabled());
}

void tst_KyViewerArea::viewersSpeakTheLanguageOfTheUser()
{
    if (!QFile::exists(":/translations/kyscript_de.qm"))
        QSKIP("built without lrelease: no translations");
    const KyTranslations german(QLocale("de_DE"));
    DicomSeriesMaker gap = ctMaker();
    gap.series = "3";
    gap.images = 9;
    gap.adjust = [](int inImage, DcmDataset& ioSet) {
        const double z = inImage < 4 ? inImage : inImage + 1;
        DicomSeriesMaker::put(ioSet, DCM_ImagePositionPatient, DicomSeriesMaker::decimals({0, 0, z}));
    };
    mFiles->add(gap);
    mStudies = mFiles->open();
    open(2);
    viewer().fuse(layer(1));
    waitForAll();
    const KyViewerTexts texts = KyViewerTexts::of(viewer());
    QCOMPARE(texts.notices.value(0), QStringLiteral("1 Bild fehlt zwischen den anderen"));
    QVERIFY2(texts.lowerLeft.value(0).startsWith("Schicht "), qPrintable(texts.lowerLeft.join("|")));
    const KyViewerMenu menu(mArea->viewers(), nullptr);
    QStringList keys;
    for (const QAction* action : menu.actions()) {
        const qsizetype mark = action->text().indexOf('&');
        QVERIFY2(action->isSeparator() || mark >= 0, qPrintable(action->text()));
        if (!action->isSeparator())
            keys += action->text().mid(mark + 1, 1).toUpper();
    }
    QVERIFY(!menu.isEmpty() && menu.title() == "&Bilder");
    QCOMPARE(keys.removeDuplicates(), 0);
}

void tst_KyViewerArea::studyListShowsSeriesBelowTheirStudies()
{
    KyStudyListModel model;
    model.setStudies(mStudies, {});
    QCOMPARE(model.rowCount(), 1);
    const QModelIndex study = model.index(0, 0);
    QCOMPARE(model.rowCount(study), 2);
    QCOMPARE(model.columnCount(study), int(KyStudyListModel::ColumnCount));
    const auto text = [&](int inRow, int inColumn) {
        return model.index(inRow, inColumn, study).data().toString();
    };
    QCOMPARE(text(0, KyStudyListModel::Patient), "Series 1");
    QCOMPARE(text(1, KyStudyListModel::Patient), "Series 2");
    QCOMPARE(text(1, KyStudyListModel::Description), "Series 2");
    QCOMPARE(text(0, KyStudyListModel::Modalities), "CT");
    QCOMPARE(text(1, KyStudyListModel::Modalities), "PT");
    QCOMPARE(text(0, KyStudyListModel::Images), "10");
    QCOMPARE(text(0, KyStudyListModel::PatientId), "");
    const QModelIndex series = model.index(1, 3, study);
    QCOMPARE(series.parent(), study);
    QCOMPARE(model.rowCount(series), 0);
    QVERIFY(!model.index(2, 0, study).isValid());
    QVERIFY(!model.index(0, 0, model.index(0, 0, study)).isValid());
    const auto layerAt = [](const QModelIndex& inIndex) {
        return inIndex.data(KyStudyListModel::LayerRole).value<KyViewerLayer>();
    };
    QCOMPARE(layerAt(study).series, size_t(0));
    QCOMPARE(layerAt(series).series, size_t(1));
    QCOMPARE(layerAt(series).study, mStudies[0]);
}

void tst_KyViewerArea::studyListGivesSeriesToDrags()
{
    KyStudyListModel model;
    model.setStudies(mStudies, {});
    const QModelIndex study = model.index(0, 0);
    const QModelIndex series = model.index(1, 0, study);
    QVERIFY(model.flags(series) & Qt::ItemIsDragEnabled);
    QCOMPARE(model.mimeTypes(), QStringList(KySeriesDrag::MimeType));
    const std::unique_ptr<QMimeData> data(model.mimeData({series, study}));
    QCOMPARE(KySeriesDrag::layer(*data).series, size_t(1));
    const std::unique_ptr<QMimeData> ofStudy(model.mimeData({study}));
    QCOMPARE(KySeriesDrag::layer(*ofStudy).series, size_t(0));
    QVERIFY(!model.mimeData({}));
    QVERIFY(drop(&widget(), *data));
    QCOMPARE(viewer().layers().at(0).series, size_t(1));
}

void tst_KyViewerArea::seriesOpensFromTheStudyList()
{
    mArea.reset();
    KyMainWindow window;
    const KyWorkstationViewers viewers(window);
    window.show();
    KyViewerLayout& layout = viewers.area().viewers();
    auto* list = window.findChild<KyStudyListView*>();
    list->expandAll();
    const QModelIndex series = list->model()->index(1, 0, list->model()->index(0, 0));
    const QPoint place = list->visualRect(series).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place);
    QCOMPARE(layout.viewer(0)->layers().at(0).series, size_t(1));
    list->setCurrentIndex(list->model()->index(0, 0));
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(layout.viewer(0)->layers().at(0).series, size_t(0));
    QVERIFY(list->isExpanded(list->model()->index(0, 0)));
}

void tst_KyViewerArea::openedStudiesFillTheViewers()
{
    mArea.reset();
    KySessionContext::currentInstance()->component<KyLoadHelper>(true)->setPrimaryExams({});
    KyMainWindow window;
    const KyWorkstationViewers viewers(window);
    KyViewerLayout& layout = viewers.area().viewers();
    QVERIFY(layout.viewer(0)->isEmpty());
    window.openFolder(mFiles->path());
    QTRY_VERIFY(!layout.viewer(0)->isEmpty());
    window.closeStudies();
    QVERIFY(layout.viewer(0)->isEmpty());
}

void tst_KyViewerArea::toolsSetTheLayout()
{
    mArea.reset();
    KyMainWindow window;
    const KyWorkstationViewers viewers(window);
    KyViewerLayout& layout = viewers.area().viewers();
    for (const char* name : {"2x2", "1x2", "1x1"}) {
        const QByteArray key = QByteArray("Viewers.Layout") + name;
        const auto tool = KyToolRegistry::getToolByDecorationKey<KyTool>(key.constData(), true);
        QVERIFY(tool);
        QVERIFY(tool->trigger(layout.activeViewer()));
        QCOMPARE(layout.layout(), name);
    }
}

void tst_KyViewerArea::menuStandsInTheMenuBar()
{
    mArea.reset();
    KyMainWindow window;
    const KyWorkstationViewers viewers(window);
    QStringList titles;
    for (const QAction* entry : window.menuBar()->actions())
        titles += entry->text().remove('&');
    QCOMPARE(titles, (QStringList{"File", "View", "Images", "Scripting", "Help"}));
    auto* menu = window.findChild<KyViewerMenu*>();
    KyImageViewerWidget& first = *viewers.area().widgetAt(0);
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 6), first.mapToGlobal(QPoint(5, 6)));
    QApplication::sendEvent(&first, &event);
    QVERIFY(menu->isVisible());
    menu->close();
}

void tst_KyViewerArea::everyEntryHasAKey()
{
    open();
    KyViewerMenu menu(mArea->viewers(), nullptr);
    Q_EMIT menu.aboutToShow();
    QStringList mnemonics;
    for (const QMenu* part : QList<QMenu*>{&menu} + menu.findChildren<QMenu*>()) {
        mnemonics.clear();
        for (const QAction* action : part->actions()) {
            if (action->isSeparator())
                continue;
            const auto place = action->text().indexOf('&');
            QVERIFY2(place >= 0, qPrintable(action->text()));
            const QString key = action->text().mid(place + 1, 1).toLower();
            QVERIFY2(!mnemonics.contains(key), qPrintable(action->text()));
            mnemonics += key;
        }
        QVERIFY(!mnemonics.isEmpty());
    }
}

void tst_KyViewerArea::readingTimeIsCounted()
{
    mArea.reset();
    KyMainWindow window;
    const KyWorkstationViewers viewers(window);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    const auto* metrics = KyStudyMetrics::instance();
    QTRY_VERIFY_WITH_TIMEOUT(metrics->getTimeSpent("1.2.3.1") > 0.5F, 10000);
}

KY_TEST_MAIN(tst_KyViewerArea)
#include "tst_KyViewerArea.moc"
