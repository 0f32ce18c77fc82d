#include "KyViewerLayout.h"

#include <kybase/KyViewerManager.h>
#include <ovbase/OvEnum.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvTranslationProperty.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QScopedValueRollback>

#include <algorithm>

namespace {

constexpr const char* EnumName = "ViewerLayout";

/// Of layouts asked for by those who heard of a change. More of them would go on for ever.
constexpr int MostChanges = 10;

struct Shape
{
    const char* key;
    const char* label;
    int rows;
    int columns;
};

constexpr Shape shapes[] = {{"1x1", QT_TRANSLATE_NOOP("KyViewerLayout", "One Viewer"), 1, 1},
                            {"1x2", QT_TRANSLATE_NOOP("KyViewerLayout", "Two Viewers Side by Side"), 1, 2},
                            {"2x2", QT_TRANSLATE_NOOP("KyViewerLayout", "Four Viewers"), 2, 2}};

const Shape* shapeOf(const QString& inKey)
{
    const auto* found = std::find_if(std::begin(shapes), std::end(shapes),
                                     [&](const Shape& s) { return inKey == QLatin1String(s.key); });
    return found == std::end(shapes) ? nullptr : found;
}

class LayoutValue final : public OvEnumValue
{
public:
    explicit LayoutValue(int inIndex)
        : mIndex(inIndex)
    {}

    int value() const override { return mIndex; }
    const char* key() const override { return shapes[mIndex].key; }
    QString label() const override
    {
        return QCoreApplication::translate("KyViewerLayout", shapes[mIndex].label);
    }
    std::unique_ptr<OvEnumValue> clone() const override { return std::make_unique<LayoutValue>(*this); }

private:
    const int mIndex;
};

class Layout final : public OvEnum
{
public:
    Layout()
        : OvEnum(EnumName)
    {}
};

OvVariant* layoutProperty()
{
    const OvPropertyPool* pool = OvPropertyPool::instance();
    return pool ? pool->variant(KyViewerLayout::PropertyId) : nullptr;
}

bool isSame(const KyViewerLayer& inA, const KyViewerLayer& inB)
{
    return Ovg::DicomDirectoryEntry::studyEquals(*inA.study, *inB.study) &&
           inA.dicomSeries().seriesInstanceUid == inB.dicomSeries().seriesInstanceUid;
}

} // namespace

void KyViewerLayout::registerProperties()
{
    static const bool isRegistered = [] {
        OvEnum::prepareRegistration(EnumName);
        for (int i = 0; i < int(std::size(shapes)); ++i)
            OvEnum::registerValue(EnumName, std::make_unique<LayoutValue>(i));
        OvEnum::registerEnum(EnumName);
        OvTranslationProperty::translate("Viewers", QT_TRANSLATE_NOOP("OvTranslationProperty", "Viewers"),
                                         nullptr);
        OvTranslationProperty::translate(PropertyId, QT_TRANSLATE_NOOP("OvTranslationProperty", "Layout"),
                                         nullptr);
        OvPropertyPool::addRegisterProperties([](OvPropertyPool& ioPool) {
            ioPool.property<Layout>(PropertyId, Layout(), ioPool.defaultSerializer());
        });
        return true;
    }();
    Q_UNUSED(isRegistered)
}

KyViewerLayout::KyViewerLayout(KySeriesVolume::Reading inReading, QObject* inParent)
    : QObject(inParent)
    , mReading(inReading)
{
    OvVariant* layout = layoutProperty();
    apply(layout ? layout->toQString() : QLatin1String(shapes[0].key));
    if (layout)
        layout->connectPropertyChangedSignal(
            this, [this](const OvVariant* changed) { apply(changed->toQString()); }, false);
    if (auto* manager = KyViewerManager::getInstance())
        manager->setActiveViewer(viewer(0));
}

/// Who hears of the ends of the viewers may ask for a layout, which comes to nothing.
KyViewerLayout::~KyViewerLayout()
{
    mIsChanging = true;
    while (!mViewers.empty())
        mViewers.pop_back();
}

bool KyViewerLayout::setLayout(const QString& inKey)
{
    if (!shapeOf(inKey))
        return false;
    mWanted = inKey;
    if (OvVariant* layout = layoutProperty())
        layout->setValueFromQString(inKey);
    apply(mWanted); // Maybe another one by now.
    return true;
}

QString KyViewerLayout::layout() const
{
    return QStringLiteral("%1x%2").arg(mRows).arg(mColumns);
}

void KyViewerLayout::apply(const QString& inKey)
{
    mWanted = inKey;
    if (mIsChanging)
        return;
    const QScopedValueRollback<bool> changing(mIsChanging, true);
    for (int count = 0; count < MostChanges; ++count) {
        const Shape* shape = shapeOf(mWanted);
        if (!shape || (shape->rows == mRows && shape->columns == mColumns))
            return;
        change(shape->rows, shape->columns);
    }
}

void KyViewerLayout::change(int inRows, int inColumns)
{
    const int places = inRows * inColumns;
    makeActiveVisible(places);
    mRows = inRows;
    mColumns = inColumns;
    while (int(mViewers.size()) > places) {
        mHidden.insert(mHidden.begin(), mViewers.back()->takeContent());
        mViewers.pop_back();
    }
    while (int(mViewers.size()) < places) {
        mViewers.emplace_back(new KyImageViewer(int(mViewers.size()) + 1, mReading));
        if (mHidden.empty())
            continue;
        mViewers.back()->setContent(std::move(mHidden.front()));
        mHidden.erase(mHidden.begin());
    }
    Q_EMIT layoutChanged();
}

/// Lets the active viewer change its content with the last place that stays, if it would go.
void KyViewerLayout::makeActiveVisible(int inCount)
{
    KyImageViewer* active = activeViewer();
    const auto found =
        std::find_if(mViewers.begin(), mViewers.end(), [&](const auto& v) { return v.get() == active; });
    if (!active || found - mViewers.begin() < inCount)
        return;
    KyImageViewer* last = viewer(inCount - 1);
    KyImageViewer::Content there = last->takeContent();
    last->setContent(active->takeContent());
    active->setContent(std::move(there));
    KyViewerManager::getInstance()->setActiveViewer(last);
}

KyImageViewer* KyViewerLayout::viewer(int inPlace) const
{
    return inPlace >= 0 && inPlace < int(mViewers.size()) ? mViewers[std::size_t(inPlace)].get() : nullptr;
}

KyImageViewer* KyViewerLayout::activeViewer() const
{
    auto* manager = KyViewerManager::getInstance();
    KyBaseViewer* active = manager ? manager->activeViewer() : nullptr;
    for (const auto& viewer : mViewers) {
        if (viewer.get() == active)
            return viewer.get();
    }
    return nullptr;
}

void KyViewerLayout::open(const KyViewerLayer& inLayer)
{
    auto* manager = KyViewerManager::getInstance();
    if (manager && !activeViewer())
        manager->setActiveViewer(viewer(0));
    // Held: who hears of what it shows may change the layout.
    const RnHandle<KyImageViewer> target = activeViewer() ? activeViewer() : viewer(0);
    target->open(inLayer);
}

bool KyViewerLayout::isShown(const KyViewerLayer& inLayer) const
{
    return std::any_of(mViewers.begin(), mViewers.end(), [&](const auto& viewer) {
        const auto layers = viewer->layers();
        return !layers.empty() && isSame(layers.front(), inLayer);
    });
}

void KyViewerLayout::fill(const std::vector<std::shared_ptr<Ovg::DicomDirectoryEntry>>& inStudies)
{
    std::vector<KyViewerLayer> wanted;
    bool isMore = true;
    for (std::size_t series = 0; isMore; ++series) {
        isMore = false;
        for (const auto& study : inStudies) {
            const KyViewerLayer layer{.study = study, .series = series};
            isMore = isMore || layer.isValid();
            if (layer.isValid() && hasImages(layer.dicomSeries()) && !isShown(layer))
                wanted.push_back(layer);
        }
    }
    std::size_t next = 0;
    const auto viewers = mViewers; // Who hears of one that is filled may change the layout.
    for (const auto& viewer : viewers) {
        if (viewer->isEmpty() && next < wanted.size())
            viewer->open(wanted[next++]);
    }
}

void KyViewerLayout::keepOnly(const std::vector<std::shared_ptr<Ovg::DicomDirectoryEntry>>& inStudies)
{
    const auto isKept = [&](const KyViewerLayer& inLayer) {
        return std::any_of(inStudies.begin(), inStudies.end(), [&](const auto& study) {
            return Ovg::DicomDirectoryEntry::studyEquals(*study, *inLayer.study);
        });
    };
    const auto viewers = mViewers; // As in fill().
    for (const auto& viewer : viewers) {
        const auto layers = viewer->layers();
        if (!layers.empty() && !isKept(layers.front()))
            viewer->open({});
        else if (layers.size() > 1 && !isKept(layers[1]))
            viewer->fuse({});
    }
    for (KyImageViewer::Content& content : mHidden) {
        const bool isAllKept = std::all_of(content.layers.begin(), content.layers.end(),
                                           [&](const auto& layer) { return isKept(layer.what); });
        if (!isAllKept)
            content = {};
    }
}

bool KyViewerLayout::hasImages(const Ovg::DicomSeries& inSeries)
{
    constexpr const char* others[] = {"SR",  "KO", "PR",  "RTPLAN", "RTSTRUCT", "RTRECORD", "REG", "FID",
                                      "ECG", "HD", "EPS", "AU",     "DOC",      "PLAN",     "SMR"};
    return !inSeries.instances.empty() &&
           std::none_of(std::begin(others), std::end(others),
                        [&](const char* modality) { return inSeries.modality == modality; });
}

KyViewerLayer KyViewerLayout::firstSeries(const std::shared_ptr<Ovg::DicomDirectoryEntry>& inStudy)
{
    for (KyViewerLayer layer{.study = inStudy}; layer.isValid(); ++layer.series) {
        if (hasImages(layer.dicomSeries()))
            return layer;
    }
    return {};
}
