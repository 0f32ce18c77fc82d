#include "KyImageViewer.h"

#include <kybase/KyViewerManager.h>
#include <ovvolren/OvFusion.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

KyDICOMObjectInfo::TagKey keyOf(const char* inName)
{
    KyDICOMObjectInfo::TagKey key;
    key.deserialize(QLatin1String(inName), nullptr);
    return key;
}

} // namespace

KyImageViewer::KyImageViewer(int inPlace, KySeriesVolume::Reading inReading)
    : mPlace(std::to_string(inPlace))
    , mReading(inReading)
    , mToolBar(new KyContextToolBar(this))
{}

Ky::ViewerType KyImageViewer::viewerType() const
{
    return mContent.layers.empty() ? Ky::ViewerTypeAny : Ky::ViewerTypeSlice;
}

int KyImageViewer::viewSubType() const
{
    const OvImageVolume* shown = mContent.layers.empty() ? nullptr : mContent.layers.front().volume->volume();
    return shown && !shown->content().geometry().isVolume() ? Ky::ViewSubType2D : Ky::ViewSubTypeNone;
}

OvImageSeries* KyImageViewer::imageSeries(int inIndex)
{
    const bool known = inIndex >= 0 && std::size_t(inIndex) < mContent.layers.size();
    return known ? mContent.layers[std::size_t(inIndex)].series.get() : nullptr;
}

KySeriesVolume* KyImageViewer::seriesVolume(int inLayer) const
{
    const bool known = inLayer >= 0 && std::size_t(inLayer) < mContent.layers.size();
    return known ? mContent.layers[std::size_t(inLayer)].volume.get() : nullptr;
}

OvImageVolume* KyImageViewer::imageVolume(int inLayer) const
{
    const bool known = inLayer >= 0 && std::size_t(inLayer) < mContent.layers.size();
    // Held: who hears that it was read may let it go.
    const auto series = known ? mContent.layers[std::size_t(inLayer)].volume : nullptr;
    return series ? series->volume() : nullptr;
}

OvVolume* KyImageViewer::volume(int inIndex)
{
    return imageVolume(inIndex);
}

/// Reading on demand happens here at the latest.
OvSlice* KyImageViewer::slice(int inIndex)
{
    for (int layer = 0; layer < int(mContent.layers.size()); ++layer)
        imageVolume(layer);
    return inIndex == 0 ? mContent.slice.get() : nullptr;
}

void KyImageViewer::addLayer(const KyViewerLayer& inLayer)
{
    const Ovg::DicomSeries& series = inLayer.dicomSeries();
    const auto volume = KySeriesVolume::of(series, mReading);
    mContent.layers.push_back({.what = inLayer,
                               .series = new OvImageSeries(Ky::ImageSetID(series.seriesInstanceUid)),
                               .volume = volume});
    listenTo(*volume);
}

void KyImageViewer::listenTo(const KySeriesVolume& inVolume)
{
    connect(&inVolume, &KySeriesVolume::headersRead, this, &KyImageViewer::makeSlice, Qt::UniqueConnection);
    connect(&inVolume, &KySeriesVolume::progressed, this, &KyImageViewer::changed, Qt::UniqueConnection);
    connect(&inVolume, &KySeriesVolume::finished, this, &KyImageViewer::changed, Qt::UniqueConnection);
}

void KyImageViewer::stopListening()
{
    for (const Layer& layer : mContent.layers)
        layer.volume->disconnect(this);
}

void KyImageViewer::open(const KyViewerLayer& inLayer)
{
    const float weight = mContent.fusionWeight;
    stopListening();
    mContent = Content{.fusionWeight = weight};
    if (inLayer.isValid())
        addLayer(inLayer);
    makeSlice();
}

void KyImageViewer::fuse(const KyViewerLayer& inLayer)
{
    if (mContent.layers.empty())
        return;
    stopListening();
    mContent.layers.resize(1);
    listenTo(*mContent.layers.front().volume);
    if (inLayer.isValid())
        addLayer(inLayer);
    makeSlice();
}

KyImageViewer::Content KyImageViewer::takeContent()
{
    stopListening();
    Content content = std::exchange(mContent, Content());
    noteContent();
    return content;
}

void KyImageViewer::setContent(Content inContent)
{
    stopListening();
    mContent = std::move(inContent);
    for (const Layer& layer : mContent.layers)
        listenTo(*layer.volume);
    // More may have come in while nobody listened.
    makeSlice();
}

std::vector<KyViewerLayer> KyImageViewer::layers() const
{
    std::vector<KyViewerLayer> layers;
    for (const Layer& layer : mContent.layers)
        layers.push_back(layer.what);
    return layers;
}

/// The slice of the layers that are there, on the plane of the one before.
void KyImageViewer::makeSlice()
{
    std::vector<RnHandle<OvImageVolume>> volumes;
    for (const Layer& layer : mContent.layers) {
        OvImageVolume* volume = layer.volume->present();
        if (!volume || volume->imageCount() == 0)
            break;
        volumes.emplace_back(volume);
    }
    const RnHandle<OvImageSlice> before = mContent.slice;
    mContent.slice = volumes.empty() ? nullptr : new OvImageSlice(std::move(volumes));
    if (mContent.slice && before && before->layer(0) == mContent.slice->layer(0))
        mContent.slice->setPlane(before->plane().axis(), before->plane().number());
    noteContent();
}

void KyImageViewer::noteContent()
{
    Q_EMIT changed();
    if (auto* manager = KyViewerManager::getInstance())
        Q_EMIT manager->contentChanged(this);
}

int KyImageViewer::planeCount() const
{
    return mContent.slice
               ? OvPlane::count(mContent.slice->layer(0)->content(), mContent.slice->plane().axis())
               : 0;
}

int KyImageViewer::planeNumber() const
{
    return mContent.slice ? mContent.slice->plane().number() : 0;
}

void KyImageViewer::scrollTo(int inNumber)
{
    const int number = std::clamp(inNumber, 0, std::max(0, planeCount() - 1));
    if (!mContent.slice || number == planeNumber())
        return;
    mContent.slice->setPlane(mContent.slice->plane().axis(), number);
    noteContent();
}

bool KyImageViewer::canShow(OvSlice::Orientation inOrientation) const
{
    return mContent.slice && OvPlane::axisFor(mContent.slice->layer(0)->content(), inOrientation) >= 0;
}

void KyImageViewer::setOrientation(OvSlice::Orientation inOrientation)
{
    if (!canShow(inOrientation) || orientation() == inOrientation)
        return;
    const OvVolumeContent& content = mContent.slice->layer(0)->content();
    const int axis = OvPlane::axisFor(content, inOrientation);
    mContent.slice->setPlane(axis, OvPlane::count(content, axis) / 2);
    mContent.view = View();
    noteContent();
}

OvSlice::Orientation KyImageViewer::orientation() const
{
    for (const auto orientation : {OvSlice::Axial, OvSlice::Sagittal, OvSlice::Coronal}) {
        if (canShow(orientation) && OvPlane::axisFor(mContent.slice->layer(0)->content(), orientation) ==
                                        mContent.slice->plane().axis())
            return orientation;
    }
    return OvSlice::Unknown;
}

OvWindow KyImageViewer::window(int inLayer) const
{
    if (inLayer == 0 && mContent.window)
        return *mContent.window;
    const OvImageVolume* volume = mContent.slice ? mContent.slice->layer(inLayer) : nullptr;
    if (!volume)
        return OvWindow();
    const OvVolumeContent& content = volume->content();
    const int image = inLayer == 0 ? mContent.slice->plane().image() : -1;
    const auto& own = content.image(image >= 0 ? image : content.count() / 2).window;
    const auto range = content.range();
    if (own && inLayer == 0)
        return *own;
    return range
               ? OvWindow::spanning(inLayer == 0 ? range->first : std::max(0.0, range->first), range->second)
               : own.value_or(OvWindow());
}

void KyImageViewer::setWindow(const OvWindow& inWindow)
{
    const bool isSensible =
        inWindow.width > 0 && std::isfinite(inWindow.width) && std::isfinite(inWindow.centre);
    if (!isSensible || mContent.window == inWindow)
        return;
    mContent.window = inWindow;
    if (mContent.window->width < 1 && mContent.window->function == OvWindow::Linear)
        mContent.window->function = OvWindow::LinearExact;
    noteContent();
}

void KyImageViewer::resetWindow()
{
    if (!mContent.window)
        return;
    mContent.window.reset();
    noteContent();
}

void KyImageViewer::setInverted(bool inInverted)
{
    mContent.isInverted = inInverted;
    Q_EMIT changed();
}

void KyImageViewer::setFusionWeight(double inWeight)
{
    const auto weight = float(std::clamp(inWeight, 0.0, 1.0));
    if (weight == mContent.fusionWeight || inWeight != inWeight)
        return;
    mContent.fusionWeight = weight;
    noteContent();
}

void KyImageViewer::setView(const View& inView)
{
    const auto part = [](double inPart) { return std::isfinite(inPart) ? inPart : 0; };
    View view{.zoom = std::clamp(std::isnan(inView.zoom) ? 1 : inView.zoom, SmallestZoom, LargestZoom)};
    const double farthest = std::max(1.0, view.zoom);
    view.pan = {std::clamp(part(inView.pan.x()), -farthest, farthest),
                std::clamp(part(inView.pan.y()), -farthest, farthest)};
    if (view == mContent.view)
        return;
    mContent.view = view;
    Q_EMIT changed();
}

void KyImageViewer::reset()
{
    mContent.view = View();
    mContent.isInverted = false;
    mContent.window.reset();
    noteContent();
}

QString KyImageViewer::message() const
{
    if (mContent.layers.empty())
        return QString();
    const OvImageVolume* first = mContent.layers.front().volume->present();
    if (!first)
        return tr("Reading the series…");
    const QString& error = first->content().error();
    if (!error.isEmpty())
        return error;
    const int image = mContent.slice ? mContent.slice->plane().image() : -1;
    const QString problem = first->content().problem(image);
    return problem.isEmpty() ? QString() : tr("This image cannot be shown: %1.").arg(problem);
}

QStringList KyImageViewer::notices() const
{
    QStringList notices;
    for (const Layer& layer : mContent.layers) {
        const OvImageVolume* volume = layer.volume->present();
        const bool isSecond = &layer != &mContent.layers.front();
        if (!volume)
            continue;
        if (isSecond && !volume->content().error().isEmpty())
            notices += tr("Second series: %1").arg(volume->content().error());
        for (const QString& notice : volume->content().notices())
            notices += isSecond ? tr("Second series: %1").arg(notice) : notice;
    }
    if (mContent.slice && mContent.slice->layers() > 1) {
        const QString obstacle =
            OvFusion::obstacle(mContent.slice->layer(0)->content(), mContent.slice->layer(1)->content());
        if (!obstacle.isEmpty())
            notices += tr("No fusion: %1").arg(obstacle);
    }
    return notices;
}

std::shared_ptr<const KyDICOMObjectInfo::ConditionDictionary> KyImageViewer::conditionDictionary() const
{
    const bool isAcross = mContent.slice && mContent.slice->plane().image() < 0;
    if (!isAcross && !mContent.window)
        return nullptr;
    static const auto centreKey = keyOf("DICOM.WindowCenter");
    static const auto widthKey = keyOf("DICOM.WindowWidth");
    auto conditions = std::make_shared<KyDICOMObjectInfo::ConditionDictionary>();
    conditions->setSharedOnly(isAcross);
    if (mContent.window) {
        const OvVolume* first = mContent.layers.empty() ? nullptr : mContent.layers[0].volume->present();
        conditions->setValue(centreKey, mContent.window->centre, first);
        conditions->setValue(widthKey, mContent.window->width, first);
    }
    return conditions;
}
