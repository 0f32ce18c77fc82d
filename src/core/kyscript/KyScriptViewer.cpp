#include "KyScriptViewer.h"

#include "KyScriptEngine.h"

#include <kybase/KyBaseViewer.h>
#include <kybase/KyDICOMAccessOvVolume.h>
#include <ovbase/OvImageSeries.h>
#include <ovvolren/OvData.h>
#include <ovvolren/OvSlice.h>
#include <ovvolren/OvVolume.h>

#include <cmath>
#include <limits>

namespace {

constexpr int NoSlice = -1;

/// The number of the slice that \a inViewer shows of the layer \a inLayer, or NoSlice.
int roundedSliceNumber(KyBaseViewer& inViewer, int inLayer)
{
    const OvSlice* slice = inViewer.slice(0);
    const float number = slice ? slice->sliceNumber(inLayer) : float(NoSlice);
    const bool isNumber = std::fabs(number) < float(std::numeric_limits<int>::max());
    return isNumber ? int(std::lrint(number)) : NoSlice;
}

QString typeName(Ky::ViewerType inType, int inSubType)
{
    switch (inType) {
    case Ky::ViewerTypeSlice:
        return inSubType == Ky::ViewSubType2D ? QStringLiteral("2D") : QStringLiteral("slice");
    case Ky::ViewerTypeVolRen:
        return QStringLiteral("volren");
    case Ky::ViewerTypeCurved:
        return QStringLiteral("curved");
    default:
        return QString();
    }
}

} // namespace

KyScriptViewer::KyScriptViewer(QObject* parent, KyBaseViewer* viewer)
    : QObject(parent)
    , mViewerId(viewer ? viewer->uniqueID() : RnUniqueID())
{}

RnHandle<KyBaseViewer> KyScriptViewer::viewer() const
{
    if (mViewerId.isEmpty())
        return nullptr;
    auto* found = dynamic_cast<KyBaseViewer*>(OvInterface::instanceWithUID(mViewerId));
    // Nobody holds a viewer that is being made or ended; a handle would end it a second time.
    return found && found->refCount() > 0 ? found : nullptr;
}

QString KyScriptViewer::type() const
{
    const auto v = viewer();
    return v ? typeName(v->viewerType(), v->viewSubType()) : QString();
}

QString KyScriptViewer::displaySetId() const
{
    const auto v = viewer();
    return v ? QString::fromLatin1(v->protocolDisplaySetId()) : QString();
}

QString KyScriptViewer::imageSetId(int idx) const
{
    const auto v = viewer();
    const OvImageSeries* series = v ? v->imageSeries(idx) : nullptr;
    const std::string none;
    const std::string& id = series ? series->protocolImageSetId() : none;
    return QString::fromLatin1(id);
}

int KyScriptViewer::orientation(int idx) const
{
    const auto v = viewer();
    const OvSlice* slice = v ? v->slice(0) : nullptr;
    return slice ? int(slice->orientation(idx)) : NoSlice;
}

int KyScriptViewer::sliceNumber(int idx) const
{
    const auto v = viewer();
    return v ? roundedSliceNumber(*v, idx) : NoSlice;
}

QVariant KyScriptViewer::dims(int idx) const
{
    const auto v = viewer();
    OvVolume* volume = v ? v->volume(idx) : nullptr;
    const OvData* data = volume ? volume->data(0) : nullptr;
    if (!data)
        return QVariant();
    int first = 0;
    int second = 0;
    int third = 0;
    data->dimensions(first, second, third);
    return QVariantList{first, second, third};
}

QVariant KyScriptViewer::getTag(QString tagName, int idx) const
{
    const auto v = viewer();
    const RnHandle<OvVolume> volume(v ? v->volume(idx) : nullptr);
    if (!volume)
        return QVariant();
    const int sliceNumber = roundedSliceNumber(*v, idx);
    KyDICOMObjectInfo::TagKey key;
    bool ok = false;
    key.deserialize(tagName, &ok);
    if (!ok)
        return QVariant();

    const KyConditionSource* source = v->conditionSource();
    const KyDICOMObjectInfo::Dictionary dictionary(source ? source->conditionDictionary() : nullptr);
    const auto access = std::make_shared<KyDICOMAccessOvVolume>(volume.get(), sliceNumber);
    QVariant value = dictionary.evaluate(key, access, nullptr, false);
    if (KyScriptEngine* engine = KyScriptEngine::of(this))
        engine->convertVariant(value);
    return value;
}

QVariant KyScriptViewer::fusionWeight() const
{
    const auto v = viewer();
    const bool hasVolume = v && (v->volume(0) || v->volume(1));
    return hasVolume ? QVariant(v->fusionWeight()) : QVariant();
}
