#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptStudy.h>
#include <kyscript/KyScriptViewer.h>

#include <kybase/KyBaseViewer.h>
#include <ovbase/OvImageSeries.h>
#include <ovvolren/OvData.h>
#include <ovvolren/OvSlice.h>
#include <ovvolren/OvVolume.h>
#include <ovwebservice/DicomHeader.h>

#include <QTest>

#include <cfenv>
#include <limits>

namespace {

class FakeData final : public OvData
{
public:
    void dimensions(int& outColumns, int& outRows, int& outImages) const override
    {
        outColumns = 512;
        outRows = 256;
        outImages = 3;
    }
};

class FakeVolume final : public OvVolume
{
public:
    explicit FakeVolume(std::vector<Ovg::DicomHeader> inHeaders)
        : mHeaders(std::move(inHeaders))
    {}

    OvData* data(unsigned int inIndex) override { return hasData && inIndex == 0 ? &mData : nullptr; }
    int imageCount() const override { return int(mHeaders.size()); }
    const Ovg::DicomHeader* header(int inImage) const override
    {
        const bool known = inImage >= 0 && inImage < imageCount();
        return known ? &mHeaders[size_t(inImage)] : nullptr;
    }

    bool hasData = true;

private:
    FakeData mData;
    const std::vector<Ovg::DicomHeader> mHeaders;
};

class FakeSlice final : public OvSlice
{
public:
    Orientation orientation(int inLayer) const override { return Orientation(orientationOfFirst + inLayer); }
    float sliceNumber(int inLayer) const override { return number + float(inLayer); }

    int orientationOfFirst = Axial;
    float number = 0;
};

/// A viewer that shows what its fields say.
class FakeViewer final : public KyBaseViewer, public KyConditionSource
{
public:
    Ky::ViewerType viewerType() const override { return type; }
    int viewSubType() const override { return subType; }
    KyConditionSource* conditionSource() override { return hasConditions ? this : nullptr; }
    const std::string& protocolDisplaySetId() const override { return displaySet; }
    OvImageSeries* imageSeries(int inIndex) override { return inIndex == 0 ? series.get() : nullptr; }
    OvVolume* volume(int inIndex) override
    {
        if (onVolume)
            onVolume();
        return inIndex >= 0 && inIndex < 2 ? volumes[inIndex].get() : nullptr;
    }
    OvSlice* slice(int inIndex) override { return inIndex == 0 ? sliceOnShow.get() : nullptr; }
    float fusionWeight() const override { return weight; }

    std::shared_ptr<const KyDICOMObjectInfo::ConditionDictionary> conditionDictionary() const override
    {
        return conditions;
    }

    Ky::ViewerType type = Ky::ViewerTypeSlice;
    int subType = Ky::ViewSubTypeNone;
    bool hasConditions = false;
    std::shared_ptr<KyDICOMObjectInfo::ConditionDictionary> conditions;
    std::string displaySet;
    RnHandle<OvImageSeries> series;
    RnHandle<FakeVolume> volumes[2];
    RnHandle<FakeSlice> sliceOnShow;
    float weight = 0.25F;
    std::function<void()> onVolume;
};

KyDICOMObjectInfo::TagKey key(const QString& inName)
{
    KyDICOMObjectInfo::TagKey made;
    made.deserialize(inName, nullptr);
    return made;
}

/// One image of a patient, with its own number.
Ovg::DicomHeader header(const QString& inNumber)
{
    Ovg::DicomHeader made;
    const auto set = [&](const char* inKeyword, const QString& inText) {
        made.setText(Ovg::DicomTagPath::fromText(inKeyword), inText);
    };
    set("PatientName", "Doe^Jane");
    set("InstanceNumber", inNumber);
    set("StudyDate", "20240311");
    set("StudyTime", "084512.375");
    set("ImageType", "ORIGINAL\\PRIMARY");
    set("PixelSpacing", "0.5\\0.75");
    return made;
}

RnHandle<FakeVolume> volumeOf(const QStringList& inNumbers)
{
    std::vector<Ovg::DicomHeader> headers;
    for (const QString& number : inNumbers)
        headers.push_back(header(number));
    return new FakeVolume(std::move(headers));
}

constexpr auto Patient = "DICOM.PatientName";
constexpr auto Number = "DICOM.InstanceNumber";

} // namespace

class tst_KyScriptViewer : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void typeIsTheKindAsAWord_data();
    void typeIsTheKindAsAWord();
    void displaySetIdIsReadAsLatin1();
    void imageSetIdIsThatOfTheLayer();
    void imageSetIdBeyondTheLayersIsEmpty();
    void orientationGoesToTheSliceWithTheIndex();
    void orientationIsHandedOnUnchanged_data();
    void orientationIsHandedOnUnchanged();
    void sliceNumberIsRoundedHalfToEven_data();
    void sliceNumberIsRoundedHalfToEven();
    void sliceNumberFollowsTheRoundingMode();
    void sliceNumberThatIsNoIntegerIsNeutral_data();
    void sliceNumberThatIsNoIntegerIsNeutral();
    void sliceNumberTakesTheLayer();
    void dimsAreThreeIntegers();
    void dimsOfAVolumeWithoutDataAreInvalid();
    void dimsBeyondTheLayersAreInvalid();

    void tagIsThatOfTheSliceOnShow_data();
    void tagIsThatOfTheSliceOnShow();
    void tagWithoutASliceStillAnswers();
    void tagOfASecondLayerIsThatOfItsVolume();
    void tagBeyondTheLayersIsInvalid();
    void tagNameMustBeKnown_data();
    void tagNameMustBeKnown();
    void tagOfAnAbsentElementIsInvalid();
    void worklistPrefixHasNoMeaning();
    void conditionsReplaceValues();
    void conditionsHideValues();
    void conditionsOfAPlaneAcrossImagesLeaveWhatTheyShare();
    void conditionSourceWithoutADictionaryChangesNothing();
    void dateArrivesInScriptsAsLocalMidnight();
    void timeArrivesInScriptsAsAnObjectThatPrints();
    void severalValuesArriveAsAnArray();
    void withoutAnEngineDatesStayDates();

    void fusionWeightNeedsAVolumeInOneOfTheFirstLayers_data();
    void fusionWeightNeedsAVolumeInOneOfTheFirstLayers();

    void nullViewerIsNeutral();
    void closedViewerIsNeutral();
    void emptyViewerIsNeutral();
    void plainViewerIsNeutral();
    void viewerThatClosesDuringTheCallLivesToItsEnd();
    void viewerThatIsBeingMadeOrEndedIsNoViewer();
    void indexHasADefaultInScripts();
    void operationsTakeAnything_data();
    void operationsTakeAnything();
    void scriptsSeeUndefinedForInvalid();
    void wrapperSurvivesItsViewerInScripts();
    void isNoStudy();

private:
    KyScriptViewer* wrapperIn(KyScriptEngine& ioEngine);
    QString eval(KyScriptEngine& ioEngine, const char* inCode);
    void verifyNeutral(const KyScriptViewer& inViewer);

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    RnHandle<FakeViewer> mViewer;
};

void tst_KyScriptViewer::init()
{
    mContracts = std::make_unique<ContractWatch>();
    mPlatform = std::make_unique<KyTestPlatform>();
    mViewer = new FakeViewer;
    mViewer->volumes[0] = volumeOf({"11", "12", "13"});
    mViewer->sliceOnShow = new FakeSlice;
    mViewer->series = new OvImageSeries(Ky::ImageSetID("Images \xe4"));
    mViewer->displaySet = "Set \xe4";
}

void tst_KyScriptViewer::cleanup()
{
    mViewer.reset();
    mPlatform.reset();
    mContracts.reset();
}

KyScriptViewer* tst_KyScriptViewer::wrapperIn(KyScriptEngine& ioEngine)
{
    auto* wrapper = new KyScriptViewer(&ioEngine, mViewer.get());
    QJSEngine::setObjectOwnership(wrapper, QJSEngine::CppOwnership);
    ioEngine.globalObject().setProperty("v", ioEngine.newQObject(wrapper));
    return wrapper;
}

QString tst_KyScriptViewer::eval(KyScriptEngine& ioEngine, const char* inCode)
{
    return ioEngine.QJSEngine::evaluate(QString(inCode)).toString();
}

void tst_KyScriptViewer::verifyNeutral(const KyScriptViewer& inViewer)
{
    for (const int index : {-1, 0, 1, 1000}) {
        QCOMPARE(inViewer.imageSetId(index), QString());
        QCOMPARE(inViewer.orientation(index), -1);
        QCOMPARE(inViewer.sliceNumber(index), -1);
        QVERIFY(!inViewer.dims(index).isValid());
        QVERIFY(!inViewer.getTag(Patient, index).isValid());
    }
    QCOMPARE(inViewer.displaySetId(), QString());
    QVERIFY(!inViewer.fusionWeight().isValid());
}

void tst_KyScriptViewer::typeIsTheKindAsAWord_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("subType");
    QTest::addColumn<QString>("word");
    QTest::newRow("2D") << 1 << 6 << "2D";
    QTest::newRow("slice") << 1 << 0 << "slice";
    QTest::newRow("slice 5") << 1 << 5 << "slice";
    QTest::newRow("slice 7") << 1 << 7 << "slice";
    QTest::newRow("slice -1") << 1 << -1 << "slice";
    QTest::newRow("volren") << 2 << 0 << "volren";
    QTest::newRow("volren 6") << 2 << 6 << "volren";
    QTest::newRow("curved") << 3 << 0 << "curved";
    QTest::newRow("curved 6") << 3 << 6 << "curved";
    QTest::newRow("0") << 0 << 0 << "";
    QTest::newRow("0, 6") << 0 << 6 << "";
    QTest::newRow("4") << 4 << 6 << "";
    QTest::newRow("-1") << -1 << 6 << "";
}

void tst_KyScriptViewer::typeIsTheKindAsAWord()
{
    QFETCH(int, type);
    QFETCH(int, subType);
    mViewer->type = Ky::ViewerType(type);
    mViewer->subType = subType;
    QTEST(KyScriptViewer(nullptr, mViewer.get()).type(), "word");
}

void tst_KyScriptViewer::displaySetIdIsReadAsLatin1()
{
    QCOMPARE(KyScriptViewer(nullptr, mViewer.get()).displaySetId(), QString::fromUtf8("Set ä"));
}

void tst_KyScriptViewer::imageSetIdIsThatOfTheLayer()
{
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    QCOMPARE(wrapper.imageSetId(), QString::fromUtf8("Images ä"));
    QCOMPARE(wrapper.imageSetId(0), QString::fromUtf8("Images ä"));
}

void tst_KyScriptViewer::imageSetIdBeyondTheLayersIsEmpty()
{
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    QCOMPARE(wrapper.imageSetId(1), QString());
    QCOMPARE(wrapper.imageSetId(-1), QString());
}

void tst_KyScriptViewer::orientationGoesToTheSliceWithTheIndex()
{
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    QCOMPARE(wrapper.orientation(), 0);
    QCOMPARE(wrapper.orientation(1), 1);
    QCOMPARE(wrapper.orientation(2), 2);
}

void tst_KyScriptViewer::orientationIsHandedOnUnchanged_data()
{
    QTest::addColumn<int>("orientation");
    QTest::newRow("axial") << int(OvSlice::Axial);
    QTest::newRow("sagittal") << int(OvSlice::Sagittal);
    QTest::newRow("coronal") << int(OvSlice::Coronal);
    QTest::newRow("oblique") << int(OvSlice::Oblique);
    QTest::newRow("unknown") << int(OvSlice::Unknown);
    QTest::newRow("a number of the host's") << 1234;
}

void tst_KyScriptViewer::orientationIsHandedOnUnchanged()
{
    QFETCH(int, orientation);
    mViewer->sliceOnShow->orientationOfFirst = orientation;
    QCOMPARE(KyScriptViewer(nullptr, mViewer.get()).orientation(), orientation);
}

void tst_KyScriptViewer::sliceNumberIsRoundedHalfToEven_data()
{
    QTest::addColumn<float>("number");
    QTest::addColumn<int>("rounded");
    const std::pair<float, int> rows[] = {
        {0.0F, 0},   {0.4F, 0},     {0.5F, 0},     {0.6F, 1},     {1.5F, 2},
        {2.5F, 2},   {3.5F, 4},     {2.4999F, 2},  {-0.5F, 0},    {-1.5F, -2},
        {-1.0F, -1}, {299.0F, 299}, {299.5F, 300}, {300.5F, 300}, {16777216.0F, 16777216}};
    for (const auto& [number, rounded] : rows)
        QTest::addRow("%g", double(number)) << number << rounded;
}

void tst_KyScriptViewer::sliceNumberIsRoundedHalfToEven()
{
    QFETCH(float, number);
    mViewer->sliceOnShow->number = number;
    QTEST(KyScriptViewer(nullptr, mViewer.get()).sliceNumber(), "rounded");
}

void tst_KyScriptViewer::sliceNumberFollowsTheRoundingMode()
{
    mViewer->sliceOnShow->number = 1.25F;
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    QCOMPARE(wrapper.sliceNumber(), 1);
    const int before = fegetround();
    fesetround(FE_UPWARD);
    const int rounded = wrapper.sliceNumber();
    fesetround(before);
    QCOMPARE(rounded, 2);
}

void tst_KyScriptViewer::sliceNumberThatIsNoIntegerIsNeutral_data()
{
    QTest::addColumn<float>("number");
    QTest::newRow("not a number") << std::numeric_limits<float>::quiet_NaN();
    QTest::newRow("infinite") << std::numeric_limits<float>::infinity();
    QTest::newRow("negative infinite") << -std::numeric_limits<float>::infinity();
    QTest::newRow("too large") << 3e9F;
    QTest::newRow("too small") << -3e9F;
    QTest::newRow("2 to the power of 31") << 2147483648.0F;
}

void tst_KyScriptViewer::sliceNumberThatIsNoIntegerIsNeutral()
{
    QFETCH(float, number);
    mViewer->sliceOnShow->number = number;
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    QCOMPARE(wrapper.sliceNumber(), -1);
    QCOMPARE(wrapper.getTag(Patient), "Doe^Jane");
}

void tst_KyScriptViewer::sliceNumberTakesTheLayer()
{
    mViewer->sliceOnShow->number = 7;
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    QCOMPARE(wrapper.sliceNumber(), 7);
    QCOMPARE(wrapper.sliceNumber(1), 8);
}

void tst_KyScriptViewer::dimsAreThreeIntegers()
{
    const QVariant dims = KyScriptViewer(nullptr, mViewer.get()).dims();
    QCOMPARE(dims, QVariant(QVariantList{512, 256, 3}));
    for (const QVariant& dim : dims.toList())
        QCOMPARE(dim.typeId(), int(QMetaType::Int));
}

void tst_KyScriptViewer::dimsOfAVolumeWithoutDataAreInvalid()
{
    mViewer->volumes[0]->hasData = false;
    QVERIFY(!KyScriptViewer(nullptr, mViewer.get()).dims().isValid());
}

void tst_KyScriptViewer::dimsBeyondTheLayersAreInvalid()
{
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    for (const int index : {-1, 1, 2, 1000})
        QVERIFY(!wrapper.dims(index).isValid());
}

void tst_KyScriptViewer::tagIsThatOfTheSliceOnShow_data()
{
    QTest::addColumn<float>("slice");
    QTest::addColumn<int>("number");
    QTest::newRow("first") << 0.0F << 11;
    QTest::newRow("second") << 1.0F << 12;
    QTest::newRow("last") << 2.0F << 13;
    QTest::newRow("half, even below") << 0.5F << 11;
    QTest::newRow("half, even above") << 1.5F << 13;
    QTest::newRow("nearest") << 1.4F << 12;
}

void tst_KyScriptViewer::tagIsThatOfTheSliceOnShow()
{
    QFETCH(float, slice);
    QFETCH(int, number);
    mViewer->sliceOnShow->number = slice;
    QCOMPARE(KyScriptViewer(nullptr, mViewer.get()).getTag(Number), QVariant(number));
}

void tst_KyScriptViewer::tagWithoutASliceStillAnswers()
{
    mViewer->sliceOnShow.reset();
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    QCOMPARE(wrapper.sliceNumber(), -1);
    QCOMPARE(wrapper.getTag(Patient), "Doe^Jane");
    // The images' numbers differ, and none is on show.
    QVERIFY(!wrapper.getTag(Number).isValid());
}

void tst_KyScriptViewer::tagOfASecondLayerIsThatOfItsVolume()
{
    mViewer->volumes[1] = volumeOf({"21", "22", "23"});
    mViewer->sliceOnShow->number = 0;
    QCOMPARE(KyScriptViewer(nullptr, mViewer.get()).getTag(Number, 1), 22);
}

void tst_KyScriptViewer::tagBeyondTheLayersIsInvalid()
{
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    for (const int index : {-1, 1, 2, 1000})
        QVERIFY(!wrapper.getTag(Patient, index).isValid());
}

void tst_KyScriptViewer::tagNameMustBeKnown_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"", "PatientName", "dicom.PatientName", "DICOM.", "DICOM.patientName",
                             "DICOM.No", "DICOM.(0010,0010", "DICOM.PatientName ", "DICOM.(7FE0,0010)"})
        QTest::newRow(name) << name;
}

void tst_KyScriptViewer::tagNameMustBeKnown()
{
    QFETCH(QString, name);
    QVERIFY(!KyScriptViewer(nullptr, mViewer.get()).getTag(name).isValid());
}

void tst_KyScriptViewer::tagOfAnAbsentElementIsInvalid()
{
    QVERIFY(!KyScriptViewer(nullptr, mViewer.get()).getTag("DICOM.PatientID").isValid());
}

void tst_KyScriptViewer::worklistPrefixHasNoMeaning()
{
    int calls = 0;
    KyScriptStudy::worklistDataCB = [&](const Ovg::WorklistEntry&, int) {
        ++calls;
        return QString("text");
    };
    QVERIFY(!KyScriptViewer(nullptr, mViewer.get()).getTag("Worklist.Status").isValid());
    KyScriptStudy::worklistDataCB = nullptr;
    QCOMPARE(calls, 0);
}

void tst_KyScriptViewer::conditionsReplaceValues()
{
    mViewer->hasConditions = true;
    mViewer->conditions = std::make_shared<KyDICOMObjectInfo::ConditionDictionary>();
    mViewer->conditions->setValue(key(Number), 99);
    mViewer->conditions->setValue(key("DICOM.WindowCenter"), 40.0);
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    QCOMPARE(wrapper.getTag(Number), 99);
    QCOMPARE(wrapper.getTag("DICOM.WindowCenter"), 40.0);
    QCOMPARE(wrapper.getTag(Patient), "Doe^Jane");
}

void tst_KyScriptViewer::conditionsHideValues()
{
    mViewer->hasConditions = true;
    mViewer->conditions = std::make_shared<KyDICOMObjectInfo::ConditionDictionary>();
    mViewer->conditions->setValue(key(Patient), QVariant());
    QVERIFY(!KyScriptViewer(nullptr, mViewer.get()).getTag(Patient).isValid());
}

void tst_KyScriptViewer::conditionsOfAPlaneAcrossImagesLeaveWhatTheyShare()
{
    mViewer->hasConditions = true;
    mViewer->conditions = std::make_shared<KyDICOMObjectInfo::ConditionDictionary>();
    mViewer->conditions->setSharedOnly(true);
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    QCOMPARE(wrapper.getTag(Patient), "Doe^Jane");
    QVERIFY(!wrapper.getTag(Number).isValid());
}

void tst_KyScriptViewer::conditionSourceWithoutADictionaryChangesNothing()
{
    mViewer->hasConditions = true;
    QCOMPARE(KyScriptViewer(nullptr, mViewer.get()).getTag(Number), 11);
}

void tst_KyScriptViewer::dateArrivesInScriptsAsLocalMidnight()
{
    KyScriptEngine engine(nullptr, -1);
    wrapperIn(engine);
    QCOMPARE(eval(engine,
                  "var d = v.getTag('DICOM.StudyDate');"
                  "[d instanceof Date, d.getFullYear(), d.getMonth(), d.getDate(), d.getHours()].join()"),
             "true,2024,2,11,0");
}

void tst_KyScriptViewer::timeArrivesInScriptsAsAnObjectThatPrints()
{
    KyScriptEngine engine(nullptr, -1);
    wrapperIn(engine);
    QCOMPARE(eval(engine, "var t = v.getTag('DICOM.StudyTime', 0); typeof t + ' ' + t"),
             "object 08:45:12.375");
}

void tst_KyScriptViewer::severalValuesArriveAsAnArray()
{
    KyScriptEngine engine(nullptr, -1);
    wrapperIn(engine);
    QCOMPARE(eval(engine, "JSON.stringify([v.getTag('DICOM.ImageType'), v.getTag('DICOM.PixelSpacing')])"),
             "[[\"ORIGINAL\",\"PRIMARY\"],[0.5,0.75]]");
}

void tst_KyScriptViewer::withoutAnEngineDatesStayDates()
{
    QCOMPARE(KyScriptViewer(nullptr, mViewer.get()).getTag("DICOM.StudyDate"), QVariant(QDate(2024, 3, 11)));
}

void tst_KyScriptViewer::fusionWeightNeedsAVolumeInOneOfTheFirstLayers_data()
{
    QTest::addColumn<bool>("first");
    QTest::addColumn<bool>("second");
    QTest::newRow("both") << true << true;
    QTest::newRow("first") << true << false;
    QTest::newRow("second") << false << true;
    QTest::newRow("none") << false << false;
}

void tst_KyScriptViewer::fusionWeightNeedsAVolumeInOneOfTheFirstLayers()
{
    QFETCH(bool, first);
    QFETCH(bool, second);
    mViewer->volumes[0] = first ? volumeOf({"1"}) : nullptr;
    mViewer->volumes[1] = second ? volumeOf({"1"}) : nullptr;
    const QVariant weight = KyScriptViewer(nullptr, mViewer.get()).fusionWeight();
    QCOMPARE(weight.isValid(), first || second);
    if (first || second) {
        QCOMPARE(weight.typeId(), int(QMetaType::Float));
        QCOMPARE(weight.toFloat(), 0.25F);
    }
}

void tst_KyScriptViewer::nullViewerIsNeutral()
{
    const KyScriptViewer wrapper(nullptr, nullptr);
    QCOMPARE(wrapper.type(), QString());
    verifyNeutral(wrapper);
}

void tst_KyScriptViewer::closedViewerIsNeutral()
{
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    QCOMPARE(wrapper.type(), "slice");
    mViewer.reset();
    QCOMPARE(wrapper.type(), QString());
    verifyNeutral(wrapper);
}

void tst_KyScriptViewer::emptyViewerIsNeutral()
{
    mViewer = new FakeViewer;
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    QCOMPARE(wrapper.type(), "slice");
    verifyNeutral(wrapper);
}

void tst_KyScriptViewer::plainViewerIsNeutral()
{
    class Plain final : public KyBaseViewer
    {};
    const RnHandle<KyBaseViewer> plain(new Plain);
    const KyScriptViewer wrapper(nullptr, plain.get());
    QCOMPARE(wrapper.type(), QString());
    verifyNeutral(wrapper);
}

void tst_KyScriptViewer::viewerThatClosesDuringTheCallLivesToItsEnd()
{
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    FakeViewer* const viewer = mViewer.get();
    viewer->onVolume = [this] { mViewer.reset(); };
    QCOMPARE(wrapper.getTag(Number), 11);
    QCOMPARE(wrapper.type(), QString());
}

void tst_KyScriptViewer::viewerThatIsBeingMadeOrEndedIsNoViewer()
{
    QStringList types;
    const auto note = [&] {
        auto& viewers = mPlatform->viewers;
        KyBaseViewer* last = viewers.numViewers() > 1 ? viewers.viewer(1) : nullptr;
        types += last ? KyScriptViewer(nullptr, last).type() + "." : QString("none");
    };
    connect(&mPlatform->viewers, &KyViewerManager::viewersChanged, this, note);
    RnHandle<FakeViewer> second(new FakeViewer);
    note();
    second.reset();
    disconnect(&mPlatform->viewers, nullptr, this, nullptr);
    QCOMPARE(types, (QStringList{".", "slice.", "none"}));
}

void tst_KyScriptViewer::indexHasADefaultInScripts()
{
    mViewer->sliceOnShow->number = 2;
    KyScriptEngine engine(nullptr, -1);
    wrapperIn(engine);
    QCOMPARE(eval(engine,
                  "[v.type(), v.imageSetId() === v.imageSetId(0), v.orientation(), v.orientation(1),"
                  "v.sliceNumber(), v.sliceNumber(1), v.dims(), v.dims(0), v.getTag('DICOM.InstanceNumber'),"
                  "v.getTag('DICOM.InstanceNumber', 0), v.fusionWeight()].join(' ')"),
             "slice true 0 1 2 3 512,256,3 512,256,3 13 13 0.25");
}

void tst_KyScriptViewer::operationsTakeAnything_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("seen");
    for (const char* zero : {"NaN", "Infinity", "-Infinity", "-0", "null", "({})", "[]", "'x'", "0.9",
                             "4294967296", "(function() {})", "viewer"})
        QTest::newRow(zero) << zero << "string,object,true,number,number";
    for (const char* other : {"1e9", "-1", "2147483647", "-2147483648", "[7]", "true"})
        QTest::newRow(other) << other << "undefined,undefined,false,number,number";
    // No integer of the language.
    QTest::newRow("array with a symbol") << "[Symbol()]"
                                         << "TypeError: Type error";
}

/// An index counts as the integer that the language makes of it; a name as its text.
void tst_KyScriptViewer::operationsTakeAnything()
{
    QFETCH(QString, value);
    KyScriptEngine engine(nullptr, -1);
    wrapperIn(engine);
    engine.globalObject().setProperty("viewer", engine.globalObject().property("v"));
    const QString code = "var x = " + value +
                         "; v.getTag(x); v.getTag(x, x);"
                         "[typeof v.getTag('DICOM.PatientName', x), typeof v.dims(x),"
                         " v.imageSetId(x) !== '', typeof v.orientation(x), typeof v.sliceNumber(x)].join()";
    QTEST(eval(engine, code.toUtf8().constData()), "seen");
}

void tst_KyScriptViewer::scriptsSeeUndefinedForInvalid()
{
    mViewer = new FakeViewer;
    KyScriptEngine engine(nullptr, -1);
    wrapperIn(engine);
    QCOMPARE(eval(engine, "[v.dims(), v.dims(5), v.getTag('DICOM.PatientName'), v.fusionWeight()]"
                          ".map(x => typeof x).join()"),
             "undefined,undefined,undefined,undefined");
}

void tst_KyScriptViewer::wrapperSurvivesItsViewerInScripts()
{
    KyScriptEngine engine(nullptr, -1);
    wrapperIn(engine);
    mViewer.reset();
    QCOMPARE(eval(engine, "JSON.stringify([v.type(), v.displaySetId(), v.imageSetId(3), v.orientation(),"
                          "v.sliceNumber()])"),
             "[\"\",\"\",\"\",-1,-1]");
}

void tst_KyScriptViewer::isNoStudy()
{
    const KyScriptViewer wrapper(nullptr, mViewer.get());
    QVERIFY(!KyScriptStudy(KyTestPlatform::study("1.2")).equals(&wrapper));
}

KY_TEST_MAIN(tst_KyScriptViewer)
#include "tst_KyScriptViewer.moc"
