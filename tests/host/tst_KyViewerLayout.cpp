#include "HostSeries.h"

#include <support/ContractWatch.h>
#include <support/KyTest.h>

#include <common/KyHostPlatform.h>
#include <common/KyPatientName.h>
#include <common/KyViewerLayout.h>
#include <common/KyViewerTexts.h>
#include <common/KyViewerTools.h>
#include <kybase/KyTool.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptViewer.h>
#include <ovvolren/OvData.h>

#include <QSignalSpy>

class tst_KyViewerLayout : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void seriesIsReadInTheBackground();
    void seriesIsReadOnDemandWithoutPixels();
    void seriesIsSharedWhileSomebodyHasIt();
    void seriesThatNobodyWantsIsLetGo();

    void emptyViewerIsNeutral();
    void openedSeriesIsOnShow();
    void stackIsA2DViewer();
    void seriesWithoutImagesIsTold();
    void scrollingStaysInside();
    void orientationsAreTakenAndLeft();
    void windowIsTheImagesUntilItIsSet();
    void windowOfImagesWithoutOneSpansTheValues();
    void senselessWindowsAreIgnored_data();
    void senselessWindowsAreIgnored();
    void viewIsBounded();
    void resetBringsTheFirstLookBack();
    void secondSeriesIsFused();
    void fusionThatCannotBeIsTold();
    void fusionEnds();
    void weightIsBounded_data();
    void weightIsBounded();
    void conditionsTellTheWindowAndThePlane();
    void windowIsToldForItsLayerOnly();
    void changesAreTold();
    void imageThatCannotBeReadIsTold();

    void textsNameWhatIsOnShow();
    void textsFollowThePlane();
    void textsOfAnEmptyViewerAreEmpty();
    void patientNamesAreForPeople_data();
    void patientNamesAreForPeople();

    void layoutIsThatOfTheProperty();
    void layoutOfNoShapeIsRefused();
    void placesAreDisplaySetIds();
    void firstViewerIsActive();
    void smallerLayoutKeepsTheActiveViewerInSight();
    void hiddenPlacesComeBackAsTheyWere();
    void seriesOpensInTheActiveViewer();
    void emptyPlacesAreFilled();
    void reportsAreNotShown();
    void endedStudiesLeave();
    void layoutWithoutAPoolWorks();

    void scriptsSeeAViewerThatIsReadOnDemand();
    void scriptsSetTheLayout();
    void wrapperOfAPlaceThatWentIsNeutral();
    void layoutsMayBeAskedForInTheMiddleOfAChange_data();
    void layoutsMayBeAskedForInTheMiddleOfAChange();
    void placesMayGoWhileTheyAreFilled_data();
    void placesMayGoWhileTheyAreFilled();
    void layoutsThatChaseEachOtherEnd();
    void layoutMayBeAskedForWhileItEnds();

private:
    KyViewerLayer layer(std::size_t inSeries = 0, std::size_t inStudy = 0)
    {
        return {.study = mStudies.at(inStudy), .series = inSeries};
    }
    /// A viewer with that series, all of it there.
    RnHandle<KyImageViewer> opened(std::size_t inSeries = 0);
    static bool isRead(const KyImageViewer& inViewer);

    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyHostPlatform> mPlatform;
    std::unique_ptr<HostSeries> mFiles;
    KyLoadHelper::Exams mStudies;
};

void tst_KyViewerLayout::init()
{
    mContracts = std::make_unique<ContractWatch>();
    mPlatform = std::make_unique<KyHostPlatform>(KyHostOptions());
    mFiles = std::make_unique<HostSeries>();
    mFiles->add(ctMaker());
    mFiles->add(petMaker());
    mStudies = mFiles->open();
}

void tst_KyViewerLayout::cleanup()
{
    mStudies.clear();
    mPlatform.reset();
    mFiles.reset();
    mContracts.reset();
}

bool tst_KyViewerLayout::isRead(const KyImageViewer& inViewer)
{
    for (int layer = 0; inViewer.seriesVolume(layer); ++layer) {
        if (inViewer.seriesVolume(layer)->isLoading())
            return false;
    }
    return true;
}

RnHandle<KyImageViewer> tst_KyViewerLayout::opened(std::size_t inSeries)
{
    const RnHandle<KyImageViewer> viewer(new KyImageViewer(1, KySeriesVolume::Reading::InBackground));
    viewer->open(layer(inSeries));
    if (!QTest::qWaitFor([&] { return isRead(*viewer); }, 20000))
        qFatal("the series is not read");
    return viewer;
}

void tst_KyViewerLayout::seriesIsReadInTheBackground()
{
    const auto volume = KySeriesVolume::of(layer().dicomSeries(), KySeriesVolume::Reading::InBackground);
    QSignalSpy headers(volume.get(), &KySeriesVolume::headersRead);
    QSignalSpy finished(volume.get(), &KySeriesVolume::finished);
    QVERIFY(!volume->volume());
    QVERIFY(volume->isLoading());
    QCOMPARE(volume->total(), 0);
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(headers.size(), 1);
    QVERIFY(!volume->isLoading());
    QCOMPARE(volume->done(), 10);
    QCOMPARE(volume->total(), 10);
    QVERIFY(volume->volume()->content().pixels(9));
}

void tst_KyViewerLayout::seriesIsReadOnDemandWithoutPixels()
{
    const auto volume = KySeriesVolume::of(layer().dicomSeries(), KySeriesVolume::Reading::OnDemand);
    QSignalSpy headers(volume.get(), &KySeriesVolume::headersRead);
    QVERIFY(!volume->present());
    QVERIFY(!volume->isLoading());
    QVERIFY(volume->volume());
    QCOMPARE(headers.size(), 1);
    QCOMPARE(volume->volume()->imageCount(), 10);
    QCOMPARE(volume->present(), volume->volume());
    QVERIFY(!volume->volume()->content().pixels(0));
}

void tst_KyViewerLayout::seriesIsSharedWhileSomebodyHasIt()
{
    constexpr auto Background = KySeriesVolume::Reading::InBackground;
    const auto first = KySeriesVolume::of(layer().dicomSeries(), Background);
    QCOMPARE(KySeriesVolume::of(layer().dicomSeries(), Background), first);
    QVERIFY(KySeriesVolume::of(layer(1).dicomSeries(), Background) != first);
}

void tst_KyViewerLayout::seriesThatNobodyWantsIsLetGo()
{
    const auto before = OvInterface::numInstances();
    auto volume = KySeriesVolume::of(layer().dicomSeries(), KySeriesVolume::Reading::OnDemand);
    volume->volume();
    QCOMPARE(OvInterface::numInstances(), before + 1);
    volume.reset();
    QCOMPARE(OvInterface::numInstances(), before);
    // One that is still being read: nothing is left of it either.
    volume = KySeriesVolume::of(layer().dicomSeries(), KySeriesVolume::Reading::InBackground);
    volume.reset();
    QTest::qWait(50);
    QCOMPARE(OvInterface::numInstances(), before);
}

void tst_KyViewerLayout::emptyViewerIsNeutral()
{
    const RnHandle<KyImageViewer> viewer(new KyImageViewer(3, KySeriesVolume::Reading::InBackground));
    QCOMPARE(viewer->viewerType(), Ky::ViewerTypeAny);
    QCOMPARE(viewer->protocolDisplaySetId(), std::string("3"));
    QVERIFY(viewer->isEmpty() && !viewer->volume(0) && !viewer->slice(0) && !viewer->imageSeries(0));
    QCOMPARE(viewer->fusionWeight(), 0.0F);
    QCOMPARE(viewer->planeCount(), 0);
    QVERIFY(!viewer->canShow(OvSlice::Axial));
    QCOMPARE(viewer->orientation(), OvSlice::Unknown);
    QCOMPARE(viewer->message(), QString());
    QCOMPARE(viewer->notices(), QStringList());
    viewer->scrollBy(3);
    viewer->setOrientation(OvSlice::Coronal);
    viewer->fuse(layer());
    viewer->reset();
    QVERIFY(viewer->isEmpty());
    QVERIFY(viewer->contextToolBar());
    QCOMPARE(KyScriptViewer(nullptr, viewer.get()).type(), QString());
}

void tst_KyViewerLayout::openedSeriesIsOnShow()
{
    const auto viewer = opened();
    QCOMPARE(viewer->viewerType(), Ky::ViewerTypeSlice);
    QCOMPARE(viewer->viewSubType(), int(Ky::ViewSubTypeNone));
    QCOMPARE(viewer->planeCount(), 10);
    QCOMPARE(viewer->planeNumber(), 5);
    QCOMPARE(viewer->orientation(), OvSlice::Axial);
    QCOMPARE(std::string(viewer->imageSeries(0)->protocolImageSetId()), std::string("1.2.3.1.1"));
    QVERIFY(!viewer->imageSeries(1) && !viewer->imageSeries(-1) && !viewer->volume(1));
    QCOMPARE(viewer->volume(0)->dbMetaInfo()->studyId.c_str(), "1.2.3.1");
    QVERIFY(viewer->slice(0));
    QVERIFY(!viewer->slice(1));
    const KyScriptViewer script(nullptr, viewer.get());
    QCOMPARE(script.type(), "slice");
    QCOMPARE(script.displaySetId(), "1");
    QCOMPARE(script.imageSetId(), "1.2.3.1.1");
    QCOMPARE(script.sliceNumber(), 5);
    QCOMPARE(script.dims(), QVariant(QVariantList{16, 12, 10}));
    QCOMPARE(script.getTag("DICOM.InstanceNumber"), 6);
}

void tst_KyViewerLayout::stackIsA2DViewer()
{
    DicomSeriesMaker stack = ctMaker();
    stack.series = "3";
    stack.step = {0, 0, 0};
    mFiles->add(stack);
    mStudies = mFiles->open();
    const auto viewer = opened(2);
    QCOMPARE(KyScriptViewer(nullptr, viewer.get()).type(), "2D");
    QCOMPARE(viewer->notices(), QStringList("Several images lie at the same place: no other orientations"));
    QVERIFY(viewer->canShow(OvSlice::Axial));
    QVERIFY(!viewer->canShow(OvSlice::Coronal));
    viewer->setOrientation(OvSlice::Coronal);
    QCOMPARE(viewer->orientation(), OvSlice::Axial);
}

void tst_KyViewerLayout::seriesWithoutImagesIsTold()
{
    DicomSeriesMaker report = ctMaker();
    report.series = "3";
    report.images = 1;
    report.adjust = [](int, DcmDataset& ioSet) {
        DicomSeriesMaker::put(ioSet, DCM_Modality, "SR");
        ioSet.findAndDeleteElement(DCM_Rows);
        ioSet.findAndDeleteElement(DCM_Columns);
    };
    mFiles->add(report);
    mStudies = mFiles->open();
    const auto viewer = opened(2);
    QCOMPARE(viewer->message(), "The file has no image (SR)");
    QVERIFY(!viewer->slice(0));
    QVERIFY(!viewer->volume(0)->data(0));
    QCOMPARE(viewer->planeCount(), 0);
    QCOMPARE(KyScriptViewer(nullptr, viewer.get()).sliceNumber(), -1);
    QVERIFY(!KyScriptViewer(nullptr, viewer.get()).dims().isValid());
    viewer->scrollBy(1);
}

void tst_KyViewerLayout::scrollingStaysInside()
{
    const auto viewer = opened();
    viewer->scrollBy(2);
    QCOMPARE(viewer->planeNumber(), 7);
    viewer->scrollBy(100);
    QCOMPARE(viewer->planeNumber(), 9);
    viewer->scrollTo(-5);
    QCOMPARE(viewer->planeNumber(), 0);
    QCOMPARE(viewer->slice(0)->sliceNumber(0), 0.0F);
}

void tst_KyViewerLayout::orientationsAreTakenAndLeft()
{
    const auto viewer = opened();
    viewer->setOrientation(OvSlice::Coronal);
    QCOMPARE(viewer->orientation(), OvSlice::Coronal);
    QCOMPARE(viewer->planeCount(), 12);
    QCOMPARE(viewer->planeNumber(), 6);
    QCOMPARE(KyScriptViewer(nullptr, viewer.get()).orientation(), 2);
    viewer->setOrientation(OvSlice::Sagittal);
    QCOMPARE(viewer->planeCount(), 16);
    QCOMPARE(KyScriptViewer(nullptr, viewer.get()).orientation(), 1);
    viewer->setOrientation(OvSlice::Oblique);
    QCOMPARE(viewer->orientation(), OvSlice::Sagittal);
    viewer->setOrientation(OvSlice::Axial);
    QCOMPARE(viewer->planeCount(), 10);
}

void tst_KyViewerLayout::windowIsTheImagesUntilItIsSet()
{
    const auto viewer = opened();
    const OvWindow own{.centre = 128, .width = 256, .function = OvWindow::Linear};
    QCOMPARE(viewer->window(0), own);
    QVERIFY(!viewer->hasOwnWindow());
    const OvWindow set{.centre = 40, .width = 400, .function = OvWindow::Linear};
    viewer->setWindow(set);
    QCOMPARE(viewer->window(0), set);
    viewer->scrollBy(1);
    QCOMPARE(viewer->window(0), set);
    viewer->resetWindow();
    QCOMPARE(viewer->window(0), own);
}

void tst_KyViewerLayout::windowOfImagesWithoutOneSpansTheValues()
{
    const auto viewer = opened(1);
    const OvWindow window = viewer->window(0);
    QCOMPARE(window, OvWindow::spanning(0, 20 * 7 + 6 * 5 + 21 * 3));
}

void tst_KyViewerLayout::senselessWindowsAreIgnored_data()
{
    QTest::addColumn<double>("centre");
    QTest::addColumn<double>("width");
    QTest::newRow("no width") << 5.0 << 0.0;
    QTest::newRow("negative") << 5.0 << -1.0;
    QTest::newRow("not a number") << 5.0 << std::nan("");
    QTest::newRow("infinite") << 5.0 << double(INFINITY);
    QTest::newRow("centre not a number") << std::nan("") << 5.0;
}

void tst_KyViewerLayout::senselessWindowsAreIgnored()
{
    QFETCH(double, centre);
    QFETCH(double, width);
    const auto viewer = opened();
    viewer->setWindow({.centre = centre, .width = width, .function = OvWindow::Linear});
    QVERIFY(!viewer->hasOwnWindow());
}

void tst_KyViewerLayout::viewIsBounded()
{
    const auto viewer = opened();
    viewer->setView({.zoom = 1e9, .pan = {1e9, -1e9}});
    QCOMPARE(viewer->view(), (KyImageViewer::View{.zoom = 50, .pan = {50, -50}}));
    viewer->setView({.zoom = 0, .pan = {0.5, 3}});
    QCOMPARE(viewer->view(), (KyImageViewer::View{.zoom = 0.1, .pan = {0.5, 1}}));
    viewer->setView({.zoom = std::nan(""), .pan = {std::nan(""), INFINITY}});
    QCOMPARE(viewer->view(), KyImageViewer::View());
}

void tst_KyViewerLayout::resetBringsTheFirstLookBack()
{
    const auto viewer = opened();
    viewer->setView({.zoom = 2, .pan = {0.1, 0.2}});
    viewer->setInverted(true);
    viewer->setWindow({.centre = 1, .width = 2, .function = OvWindow::Linear});
    viewer->reset();
    QCOMPARE(viewer->view(), KyImageViewer::View());
    QVERIFY(!viewer->isInverted());
    QVERIFY(!viewer->hasOwnWindow());
}

void tst_KyViewerLayout::secondSeriesIsFused()
{
    const auto viewer = opened();
    viewer->scrollTo(6);
    viewer->fuse(layer(1));
    QTRY_VERIFY(isRead(*viewer));
    QCOMPARE(viewer->layers().size(), size_t(2));
    QCOMPARE(viewer->planeNumber(), 6);
    QCOMPARE(viewer->imageSlice()->layers(), 2);
    QCOMPARE(viewer->slice(0)->sliceNumber(1), 2.0F);
    QCOMPARE(viewer->fusionWeight(), 0.5F);
    QCOMPARE(viewer->notices(), QStringList());
    const KyScriptViewer script(nullptr, viewer.get());
    QCOMPARE(script.imageSetId(1), "1.2.3.1.2");
    QCOMPARE(script.dims(1), QVariant(QVariantList{8, 6, 4}));
    QCOMPARE(script.sliceNumber(1), 2);
    QCOMPARE(script.getTag("DICOM.Modality", 1), "PT");
    QCOMPARE(script.fusionWeight().toFloat(), 0.5F);
    QCOMPARE(viewer->window(1), OvWindow::spanning(0, 20 * 7 + 6 * 5 + 21 * 3));
}

void tst_KyViewerLayout::fusionThatCannotBeIsTold()
{
    DicomSeriesMaker elsewhere = petMaker();
    elsewhere.series = "3";
    elsewhere.frameOfReference = "1.2.3.77";
    mFiles->add(elsewhere);
    mStudies = mFiles->open();
    const auto viewer = opened();
    viewer->fuse(layer(2));
    QTRY_VERIFY(isRead(*viewer));
    QCOMPARE(viewer->notices(), QStringList("No fusion: The two series have no common frame of reference."));
    QCOMPARE(viewer->slice(0)->sliceNumber(1), -1.0F);
}

void tst_KyViewerLayout::fusionEnds()
{
    const auto viewer = opened();
    viewer->fuse(layer(1));
    viewer->fuse(layer(0));
    QTRY_VERIFY(isRead(*viewer));
    QCOMPARE(viewer->layers().size(), size_t(2));
    QCOMPARE(viewer->imageVolume(1), viewer->imageVolume(0));
    viewer->fuse({});
    QCOMPARE(viewer->layers().size(), size_t(1));
    QCOMPARE(viewer->fusionWeight(), 0.0F);
    QCOMPARE(viewer->imageSlice()->layers(), 1);
}

void tst_KyViewerLayout::weightIsBounded_data()
{
    QTest::addColumn<double>("weight");
    QTest::addColumn<float>("taken");
    QTest::newRow("none") << 0.0 << 0.0F;
    QTest::newRow("a third") << 1 / 3.0 << float(1 / 3.0);
    QTest::newRow("all") << 1.0 << 1.0F;
    QTest::newRow("less") << -0.1 << 0.0F;
    QTest::newRow("more") << 1.1 << 1.0F;
    QTest::newRow("not a number") << std::nan("") << 0.5F;
}

void tst_KyViewerLayout::weightIsBounded()
{
    QFETCH(double, weight);
    const auto viewer = opened();
    viewer->setFusionWeight(weight);
    QCOMPARE(viewer->fusionWeight(), 0.0F);
    viewer->fuse(layer(1));
    QTEST(viewer->fusionWeight(), "taken");
}

void tst_KyViewerLayout::conditionsTellTheWindowAndThePlane()
{
    const auto viewer = opened();
    const KyScriptViewer script(nullptr, viewer.get());
    QCOMPARE(script.getTag("DICOM.WindowCenter"), 128.0);
    viewer->setWindow({.centre = 40, .width = 400, .function = OvWindow::Linear});
    QCOMPARE(script.getTag("DICOM.WindowCenter"), 40.0);
    QCOMPARE(script.getTag("DICOM.WindowWidth"), 400.0);
    QCOMPARE(script.getTag("DICOM.SliceLocation"), 5.0);
    viewer->setOrientation(OvSlice::Sagittal);
    QVERIFY(!script.getTag("DICOM.SliceLocation").isValid());
    QVERIFY(!script.getTag("DICOM.InstanceNumber").isValid());
    QCOMPARE(script.getTag("DICOM.PatientName"), "Doe^Jane");
    QCOMPARE(script.getTag("DICOM.WindowWidth"), 400.0);
}

/// The second layer has a window of its own, which nobody has changed.
void tst_KyViewerLayout::windowIsToldForItsLayerOnly()
{
    const auto viewer = opened();
    viewer->fuse(layer(1));
    QTRY_VERIFY(isRead(*viewer));
    const KyScriptViewer script(nullptr, viewer.get());
    const QVariant ofSecond = script.getTag("DICOM.WindowCenter", 1);
    viewer->setWindow({.centre = 40, .width = 400, .function = OvWindow::Linear});
    QCOMPARE(script.getTag("DICOM.WindowCenter", 0), 40.0);
    QCOMPARE(script.getTag("DICOM.WindowCenter", 1), ofSecond);
    QVERIFY(ofSecond != 40.0);
    // In a plane across the images only what they share holds for both.
    viewer->setOrientation(OvSlice::Sagittal);
    QVERIFY(!script.getTag("DICOM.InstanceNumber", 0).isValid());
    QVERIFY(!script.getTag("DICOM.InstanceNumber", 1).isValid());
    QCOMPARE(script.getTag("DICOM.PatientName", 1), "Doe^Jane");
}

void tst_KyViewerLayout::changesAreTold()
{
    KyViewerManager& manager = *KyViewerManager::getInstance();
    const auto viewer = opened();
    QSignalSpy changed(viewer.get(), &KyImageViewer::changed);
    int content = 0;
    connect(&manager, &KyViewerManager::contentChanged, viewer.get(),
            [&](const KyBaseViewer* inViewer) { content += inViewer == viewer.get() ? 1 : 0; });
    const auto told = [&] {
        const auto counts = std::pair(changed.size() > 0, content > 0);
        changed.clear();
        content = 0;
        return counts;
    };
    const std::pair<bool, bool> none(false, false);
    const std::pair<bool, bool> looks(true, false);
    const std::pair<bool, bool> both(true, true);
    viewer->scrollBy(1);
    QCOMPARE(told(), both);
    viewer->scrollTo(viewer->planeNumber());
    QCOMPARE(told(), none);
    viewer->setOrientation(OvSlice::Coronal);
    QCOMPARE(told(), both);
    viewer->setWindow({.centre = 1, .width = 2, .function = OvWindow::Linear});
    QCOMPARE(told(), both);
    viewer->setView({.zoom = 2});
    QCOMPARE(told(), looks);
    viewer->setView({.zoom = 2});
    QCOMPARE(told(), none);
    viewer->setInverted(true);
    QCOMPARE(told(), looks);
    viewer->setFusionWeight(0.7);
    QCOMPARE(told(), both);
    viewer->open({});
    QCOMPARE(told(), both);
}

void tst_KyViewerLayout::imageThatCannotBeReadIsTold()
{
    DicomSeriesMaker broken = ctMaker();
    broken.series = "3";
    broken.adjust = [](int inImage, DcmDataset& ioSet) {
        if (inImage == 4)
            DicomSeriesMaker::putPixels(ioSet, 2, 2, [](int, int) { return 0; });
    };
    mFiles->add(broken);
    mStudies = mFiles->open();
    const auto viewer = opened(2);
    QCOMPARE(viewer->message(), QString());
    viewer->scrollTo(4);
    QCOMPARE(viewer->message(), "This image cannot be shown: it ends in the midst of its pixels.");
    viewer->setOrientation(OvSlice::Coronal);
    QCOMPARE(viewer->message(), QString());
}

void tst_KyViewerLayout::textsNameWhatIsOnShow()
{
    const auto viewer = opened();
    viewer->contextToolBar()->setDisplayHint("Measure the nodule");
    const KyViewerTexts texts = KyViewerTexts::of(*viewer);
    QCOMPARE(texts.upperLeft.mid(0, 2), (QStringList{"Doe, Jane", "P1"}));
    QVERIFY(texts.upperLeft.value(2).contains("1958") && texts.upperLeft.value(2).endsWith(" F"));
    QCOMPARE(texts.upperRight.value(0), "Chest");
    QVERIFY(texts.upperRight.value(1).contains("2024"));
    QCOMPARE(texts.upperRight.value(2), QString::fromUtf8("CT 1 · Series 1"));
    QCOMPARE(texts.lowerLeft, (QStringList{"Slice 6 / 10", "axial z 5.0 mm", "C 128  W 256"}));
    QCOMPARE(texts.lowerRight, QStringList());
    QCOMPARE(texts.hint, "Measure the nodule");
    QCOMPARE(texts.message, QString());
    QCOMPARE(texts.left + texts.right + texts.upper + texts.lower, "RLAP");
}

void tst_KyViewerLayout::textsFollowThePlane()
{
    const auto viewer = opened();
    viewer->setOrientation(OvSlice::Sagittal);
    viewer->setWindow({.centre = 0.125, .width = 33.333, .function = OvWindow::Linear});
    viewer->fuse(layer(1));
    QTRY_VERIFY(isRead(*viewer));
    viewer->setFusionWeight(0.304);
    const KyViewerTexts texts = KyViewerTexts::of(*viewer);
    QCOMPARE(texts.lowerLeft, (QStringList{"Slice 9 / 16", "sagittal x 8.0 mm", "C 0.13  W 33.3"}));
    QCOMPARE(texts.lowerRight, (QStringList{QString::fromUtf8("PT 2 · Series 2"), "Fusion 30 %"}));
    QCOMPARE(texts.left + texts.right + texts.upper + texts.lower, "APHF");
}

void tst_KyViewerLayout::textsOfAnEmptyViewerAreEmpty()
{
    const RnHandle<KyImageViewer> viewer(new KyImageViewer(1, KySeriesVolume::Reading::InBackground));
    const KyViewerTexts texts = KyViewerTexts::of(*viewer);
    QVERIFY(texts.upperLeft.isEmpty() && texts.upperRight.isEmpty() && texts.lowerLeft.isEmpty());
    QVERIFY(texts.lowerRight.isEmpty() && texts.message.isEmpty() && texts.hint.isEmpty());
}

void tst_KyViewerLayout::patientNamesAreForPeople_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("display");
    QTest::newRow("plain") << "Doe^Jane"
                           << "Doe, Jane";
    QTest::newRow("middle") << "Doe^Jane^Mary"
                            << "Doe, Jane Mary";
    QTest::newRow("family") << "Doe"
                            << "Doe";
    QTest::newRow("given") << "^Jane"
                           << "Jane";
    QTest::newRow("second group") << "=Yamada^Tarou"
                                  << "Yamada, Tarou";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("carets") << "^^^"
                            << "";
}

void tst_KyViewerLayout::patientNamesAreForPeople()
{
    QFETCH(QString, name);
    QTEST(KyPatientName::forDisplay(name), "display");
}

void tst_KyViewerLayout::layoutIsThatOfTheProperty()
{
    OvVariant* property = OvPropertyPool::instance()->variant("Viewers.Layout");
    QVERIFY(property);
    QCOMPARE(property->toQString(), "1x1");
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    QSignalSpy changed(&layout, &KyViewerLayout::layoutChanged);
    QCOMPARE(layout.layout(), "1x1");
    QCOMPARE(KyViewerManager::getInstance()->numViewers(), 1);
    property->setValueFromQString("2x2");
    QCOMPARE(layout.rows(), 2);
    QCOMPARE(layout.columns(), 2);
    QCOMPARE(KyViewerManager::getInstance()->numViewers(), 4);
    QCOMPARE(changed.size(), 1);
    QVERIFY(layout.setLayout("1x2"));
    QCOMPARE(property->toQString(), "1x2");
    QCOMPARE(layout.rows(), 1);
    QCOMPARE(layout.count(), 2);
    QCOMPARE(changed.size(), 2);
    QVERIFY(layout.setLayout("1x2"));
    QCOMPARE(changed.size(), 2);
    const KyViewerLayout another(KySeriesVolume::Reading::OnDemand);
    QCOMPARE(another.layout(), "1x2");
}

void tst_KyViewerLayout::layoutOfNoShapeIsRefused()
{
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    for (const char* key : {"", "3x3", "1X2", "x", "2x1"})
        QVERIFY(!layout.setLayout(key));
    QCOMPARE(layout.layout(), "1x1");
}

void tst_KyViewerLayout::placesAreDisplaySetIds()
{
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    layout.setLayout("2x2");
    for (int place = 0; place < 4; ++place)
        QCOMPARE(layout.viewer(place)->protocolDisplaySetId(), std::to_string(place + 1));
    QVERIFY(!layout.viewer(4));
    QVERIFY(!layout.viewer(-1));
}

void tst_KyViewerLayout::firstViewerIsActive()
{
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    QCOMPARE(layout.activeViewer(), layout.viewer(0));
    QCOMPARE(KyViewerManager::getInstance()->activeViewer(), layout.viewer(0));
    KyViewerManager::getInstance()->setActiveViewer(nullptr);
    QVERIFY(!layout.activeViewer());
    layout.open(layer());
    QCOMPARE(layout.activeViewer(), layout.viewer(0));
}

void tst_KyViewerLayout::smallerLayoutKeepsTheActiveViewerInSight()
{
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    layout.setLayout("2x2");
    layout.viewer(0)->open(layer(0));
    layout.viewer(2)->open(layer(1));
    KyViewerManager::getInstance()->setActiveViewer(layout.viewer(2));
    layout.setLayout("1x1");
    QCOMPARE(layout.activeViewer(), layout.viewer(0));
    QCOMPARE(layout.viewer(0)->layers().at(0).series, size_t(1));
}

void tst_KyViewerLayout::hiddenPlacesComeBackAsTheyWere()
{
    KyViewerLayout layout(KySeriesVolume::Reading::InBackground);
    layout.setLayout("2x2");
    layout.viewer(0)->open(layer(0));
    layout.viewer(3)->open(layer(0));
    QTRY_VERIFY(isRead(*layout.viewer(3)));
    layout.viewer(3)->fuse(layer(1));
    QTRY_VERIFY(isRead(*layout.viewer(3)));
    layout.viewer(3)->setOrientation(OvSlice::Coronal);
    layout.viewer(3)->scrollTo(2);
    layout.viewer(3)->setWindow({.centre = 3, .width = 7, .function = OvWindow::Linear});
    layout.viewer(3)->setFusionWeight(0.75);
    layout.setLayout("1x1");
    QCOMPARE(KyViewerManager::getInstance()->numViewers(), 1);
    layout.setLayout("2x2");
    const KyImageViewer& viewer = *layout.viewer(3);
    QCOMPARE(viewer.layers().size(), size_t(2));
    QCOMPARE(viewer.orientation(), OvSlice::Coronal);
    QCOMPARE(viewer.planeNumber(), 2);
    QCOMPARE(viewer.window(0).width, 7.0);
    QCOMPARE(viewer.fusionWeight(), 0.75F);
    QVERIFY(layout.viewer(1)->isEmpty());
    QVERIFY(layout.viewer(2)->isEmpty());
}

void tst_KyViewerLayout::seriesOpensInTheActiveViewer()
{
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    layout.setLayout("1x2");
    KyViewerManager::getInstance()->setActiveViewer(layout.viewer(1));
    layout.open(layer(1));
    QVERIFY(layout.viewer(0)->isEmpty());
    QCOMPARE(layout.viewer(1)->layers().at(0).series, size_t(1));
    layout.open({});
    QVERIFY(layout.viewer(1)->isEmpty());
    layout.open({.study = mStudies[0], .series = 99});
    QVERIFY(layout.viewer(1)->isEmpty());
}

void tst_KyViewerLayout::emptyPlacesAreFilled()
{
    DicomSeriesMaker prior = ctMaker();
    prior.study = "0";
    prior.adjust = [](int, DcmDataset& ioSet) { DicomSeriesMaker::put(ioSet, DCM_StudyDate, "20200101"); };
    mFiles->add(prior);
    mStudies = mFiles->open();
    QCOMPARE(mStudies.size(), size_t(2));
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    layout.setLayout("2x2");
    layout.viewer(1)->open(layer(0, 1));
    layout.fill(mStudies);
    const auto shown = [&](int inPlace) {
        const auto layers = layout.viewer(inPlace)->layers();
        return layers.empty() ? QString("nothing")
                              : QString::fromStdString(layers[0].dicomSeries().seriesInstanceUid);
    };
    QCOMPARE(shown(0), "1.2.3.0.1");
    QCOMPARE(shown(1), "1.2.3.1.1");
    QCOMPARE(shown(2), "1.2.3.1.2");
    QCOMPARE(shown(3), "nothing");
}

void tst_KyViewerLayout::reportsAreNotShown()
{
    DicomSeriesMaker report = ctMaker();
    report.series = "0";
    report.adjust = [](int, DcmDataset& ioSet) { DicomSeriesMaker::put(ioSet, DCM_Modality, "SR"); };
    mFiles->add(report);
    mStudies = mFiles->open();
    QCOMPARE(KyViewerLayout::firstSeries(mStudies[0]).series, size_t(1));
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    layout.fill(mStudies);
    QCOMPARE(layout.viewer(0)->layers().at(0).series, size_t(1));
    QVERIFY(!KyViewerLayout::firstSeries(nullptr).isValid());
}

void tst_KyViewerLayout::endedStudiesLeave()
{
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    layout.setLayout("2x2");
    layout.viewer(0)->open(layer(0));
    layout.viewer(3)->open(layer(0));
    layout.viewer(3)->fuse(layer(1));
    layout.keepOnly(mStudies);
    QVERIFY(!layout.viewer(0)->isEmpty());
    layout.setLayout("1x1");
    layout.keepOnly({});
    QVERIFY(layout.viewer(0)->isEmpty());
    layout.setLayout("2x2");
    QVERIFY(layout.viewer(3)->isEmpty());
}

void tst_KyViewerLayout::layoutWithoutAPoolWorks()
{
    mPlatform.reset();
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    QCOMPARE(layout.layout(), "1x1");
    QVERIFY(layout.setLayout("2x2"));
    QCOMPARE(layout.count(), 4);
    layout.open(layer());
    QVERIFY(!layout.viewer(0)->isEmpty());
}

void tst_KyViewerLayout::scriptsSeeAViewerThatIsReadOnDemand()
{
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    layout.fill(mStudies);
    KyScriptEngine engine(nullptr, -1);
    const auto eval = [&](const char* inCode) { return engine.QJSEngine::evaluate(inCode).toString(); };
    QCOMPARE(eval("var v = Orvane.activeViewer(); [v.displaySetId(), v.imageSetId()].join()"), "1,1.2.3.1.1");
    QVERIFY(!layout.viewer(0)->seriesVolume(0)->present());
    QCOMPARE(eval("[v.type(), v.orientation(), v.sliceNumber(), v.dims(), v.getTag('DICOM.InstanceNumber'),"
                  "StudyList.get('ACTIVE_VIEWER').length].join()"),
             "slice,0,5,16,12,10,6,1");
    QCOMPARE(eval("Orvane.setDisplayHint('Measure'); Orvane.viewer('1') === v"), "true");
    QCOMPARE(layout.viewer(0)->contextToolBar()->displayHint(), "Measure");
}

void tst_KyViewerLayout::scriptsSetTheLayout()
{
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    KyScriptEngine engine(nullptr, -1);
    OvPropertyPool::instance()->variant("Viewers.Layout")->setValueFromQString("2x2");
    const QString seen =
        engine
            .QJSEngine::evaluate("[1, 2, 3, 4, 5].map(i => Orvane.activateViewer(String(i)) && "
                                 "Orvane.activeViewer().displaySetId()).join()")
            .toString();
    QCOMPARE(seen, "1,2,3,4,false");
    QCOMPARE(layout.activeViewer(), layout.viewer(3));
}

void tst_KyViewerLayout::wrapperOfAPlaceThatWentIsNeutral()
{
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    layout.setLayout("2x2");
    layout.viewer(3)->open(layer());
    KyScriptEngine engine(nullptr, -1);
    const auto eval = [&](const char* inCode) { return engine.QJSEngine::evaluate(inCode).toString(); };
    QCOMPARE(eval("var v = Orvane.viewer('4'); v.type()"), "slice");
    layout.setLayout("1x1");
    QCOMPARE(eval("[v.type(), v.sliceNumber(), typeof v.dims(), Orvane.viewer('4')].join()"),
             ",-1,undefined,");
    layout.setLayout("2x2");
    QCOMPARE(eval("[v.type(), Orvane.viewer('4').type()].join()"), ",slice");
}

void tst_KyViewerLayout::layoutsMayBeAskedForInTheMiddleOfAChange_data()
{
    QTest::addColumn<int>("active");
    QTest::addColumn<QString>("to");
    QTest::addColumn<QString>("wanted");
    QTest::newRow("to two instead of one") << 2 << "1x1"
                                           << "1x2";
    QTest::newRow("back to four") << 3 << "1x1"
                                  << "2x2";
    QTest::newRow("to one instead of two") << 3 << "1x2"
                                           << "1x1";
    QTest::newRow("nothing else") << 2 << "1x2"
                                  << "1x2";
    QTest::newRow("no layout") << 2 << "1x2"
                               << "3x3";
}

/// A script hears of the active viewer that is emptied when it changes its place.
void tst_KyViewerLayout::layoutsMayBeAskedForInTheMiddleOfAChange()
{
    QFETCH(int, active);
    QFETCH(QString, to);
    QFETCH(QString, wanted);
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    layout.setLayout("2x2");
    layout.viewer(0)->open(layer(0));
    layout.viewer(active)->open(layer(1));
    KyViewerManager& manager = *KyViewerManager::getInstance();
    manager.setActiveViewer(layout.viewer(active));
    int calls = 0;
    connect(&manager, &KyViewerManager::contentChanged, this, [&] {
        if (++calls == 1)
            layout.setLayout(wanted);
    });
    layout.setLayout(to);
    manager.disconnect(this);
    QVERIFY(calls > 1);
    const QString last = wanted == "3x3" ? to : wanted;
    QCOMPARE(layout.layout(), last);
    QCOMPARE(OvPropertyPool::instance()->variant("Viewers.Layout")->toQString(), last);
    QCOMPARE(manager.numViewers(), layout.count());
    QVERIFY(layout.activeViewer());
    QCOMPARE(layout.activeViewer()->layers().at(0).series, size_t(1));
    layout.setLayout("2x2");
    int shown = 0;
    for (int place = 0; place < layout.count(); ++place)
        shown += layout.viewer(place)->isEmpty() ? 0 : 1;
    QCOMPARE(shown, 2);
}

void tst_KyViewerLayout::placesMayGoWhileTheyAreFilled_data()
{
    QTest::addColumn<QString>("wanted");
    QTest::newRow("one") << "1x1";
    QTest::newRow("two") << "1x2";
}

void tst_KyViewerLayout::placesMayGoWhileTheyAreFilled()
{
    QFETCH(QString, wanted);
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    layout.setLayout("2x2");
    KyViewerManager& manager = *KyViewerManager::getInstance();
    manager.setActiveViewer(layout.viewer(3));
    connect(&manager, &KyViewerManager::contentChanged, this, [&] { layout.setLayout(wanted); });
    layout.fill(mStudies);
    QCOMPARE(layout.layout(), wanted);
    layout.setLayout("2x2");
    layout.keepOnly({});
    QCOMPARE(layout.layout(), wanted);
    layout.setLayout("2x2");
    layout.open(layer(1));
    QCOMPARE(layout.layout(), wanted);
    manager.disconnect(this);
    QCOMPARE(manager.numViewers(), layout.count());
    QVERIFY(layout.activeViewer());
}

/// Each change leads to another one, which a script could keep up for ever.
void tst_KyViewerLayout::layoutsThatChaseEachOtherEnd()
{
    KyViewerLayout layout(KySeriesVolume::Reading::OnDemand);
    int changes = 0;
    connect(&layout, &KyViewerLayout::layoutChanged, this, [&] {
        if (++changes < 1000)
            layout.setLayout(layout.count() == 1 ? "2x2" : "1x1");
    });
    layout.setLayout("2x2");
    QVERIFY(changes < 100);
    layout.disconnect(this);
    QCOMPARE(KyViewerManager::getInstance()->numViewers(), layout.count());
}

void tst_KyViewerLayout::layoutMayBeAskedForWhileItEnds()
{
    auto layout = std::make_unique<KyViewerLayout>(KySeriesVolume::Reading::OnDemand);
    const auto tools = KyViewerTools::make(*layout);
    layout->setLayout("2x2");
    layout->viewer(3)->open(layer());
    layout->setLayout("1x1");
    int calls = 0;
    const auto ask = [&] {
        ++calls;
        OvPropertyPool::instance()->variant("Viewers.Layout")->setValueFromQString("2x2");
        tools.at(1)->trigger(nullptr);
    };
    connect(KyViewerManager::getInstance(), &KyViewerManager::activeViewerChanged, this, ask);
    layout.reset();
    QCOMPARE(calls, 1);
    ask();
    KyViewerManager::getInstance()->disconnect(this);
    QCOMPARE(KyViewerManager::getInstance()->numViewers(), 0);
    QVERIFY(!tools.at(1)->trigger(nullptr));
}

KY_TEST_MAIN(tst_KyViewerLayout)
#include "tst_KyViewerLayout.moc"
