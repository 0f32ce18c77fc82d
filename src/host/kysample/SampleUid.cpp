#include "SampleUid.h"

#include "dcmtk/config/osconfig.h"
#include "dcmtk/ofstd/ofuuid.h"

#include <QUuid>

#include <algorithm>

namespace {

// The name space of the sample's UIDs, drawn at random once.
const QUuid sampleNameSpace(0x5f1c7e0a, 0x9d43, 0x4b6e, 0x8a, 0x27, 0x3c, 0x90, 0xd1, 0x6e, 0x42, 0xb8);

} // namespace

std::string sampleUid(std::string_view inName)
{
    const auto name = QByteArray(inName.data(), static_cast<int>(inName.size()));
    const QByteArray bytes = QUuid::createUuidV5(sampleNameSpace, name).toRfc4122();
    OFUUID::BinaryRepresentation binary;
    std::copy(bytes.begin(), bytes.end(), binary.value);
    OFString text;
    OFUUID(binary).toString(text, OFUUID::ER_RepresentationOID);
    return text.c_str();
}
