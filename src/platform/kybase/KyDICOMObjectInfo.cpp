#include "KyDICOMObjectInfo.h"

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
