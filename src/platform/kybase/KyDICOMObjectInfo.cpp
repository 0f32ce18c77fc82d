#include "KyDICOMObjectInfo.h"

#include "KyDICOMObjectInterface.h"

#include <algorithm>

namespace {

const QLatin1String prefix("DICOM.");

} // namespace

void KyDICOMObjectInfo::TagKey::deserialize(const QString& inName, bool* outOk)
{
    mPath = inName.startsWith(prefix) ? Ovg::DicomTagPath::fromText(inName.mid(prefix.size()))
                                      : Ovg::DicomTagPath();
    if (outOk)
        *outOk = mPath.isValid();
}

QString KyDICOMObjectInfo::TagKey::serialize() const
{
    return mPath.isValid() ? prefix + mPath.toText() : QString();
}

void KyDICOMObjectInfo::ConditionDictionary::setValue(const TagKey& inKey, const QVariant& inValue,
                                                      const OvVolume* inVolume)
{
    std::erase_if(mValues,
                  [&](const Condition& c) { return c.key == inKey && (!inVolume || c.volume == inVolume); });
    mValues.push_back({inKey, inVolume, inValue});
}

/// The one that was set last.
const QVariant* KyDICOMObjectInfo::ConditionDictionary::value(const TagKey& inKey,
                                                              const OvVolume* inVolume) const
{
    const auto found = std::find_if(mValues.rbegin(), mValues.rend(), [&](const Condition& c) {
        return c.key == inKey && (!c.volume || c.volume == inVolume);
    });
    return found == mValues.rend() ? nullptr : &found->value;
}

KyDICOMObjectInfo::Dictionary::Dictionary(const std::shared_ptr<const ConditionDictionary>& inConditions)
    : mConditions(inConditions)
{}

QVariant KyDICOMObjectInfo::Dictionary::evaluate(const TagKey& inKey,
                                                 const std::shared_ptr<KyDICOMObjectInterface>& inObject,
                                                 Warnings* outWarnings, bool inEmptyForNone) const
{
    const QVariant none = inEmptyForNone ? QVariant(QString()) : QVariant();
    const OvVolume* volume = inObject ? inObject->volume() : nullptr;
    if (const QVariant* value = mConditions ? mConditions->value(inKey, volume) : nullptr)
        return value->isValid() ? *value : none;
    if (!inObject)
        return none;
    return mConditions && mConditions->sharedOnly() ? inObject->sharedTag(inKey, outWarnings, none)
                                                    : inObject->tag(inKey, outWarnings, none);
}
