#include "DicomHeader.h"

#include "DicomDictionary.h"
#include "DicomFileScan.h"
#include "DicomNesting.h"
#include "DicomValue.h"

#include "dcmtk/config/osconfig.h"
#include "dcmtk/dcmdata/dctk.h"

#include <QFile>

#include <algorithm>
#include <memory>
#include <mutex>
#include <optional>

namespace Ovg {

namespace {

// Values beyond this length, in bytes, stay in the file until they are asked for.
constexpr Uint32 longestKeptValue = 64 * 1024;

const DicomTagPath characterSetPath(0x0008, 0x0005);

constexpr unsigned short metaGroup = 0x0002;

std::string plainString(DcmItem& ioItem, const DcmTagKey& inKey)
{
    OFString text;
    ioItem.findAndGetOFStringArray(inKey, text);
    return {text.c_str(), text.length()};
}

std::string trimmed(const char* inText)
{
    return QByteArray(inText).trimmed().toStdString();
}

/// Where the block of the private creator of \a inStep lies in \a ioItem, and so its element. A creator can
/// have reserved more than one block: the one with the element counts.
std::optional<DcmTagKey> privateKey(DcmItem& ioItem, const DicomTagPath::Step& inStep)
{
    constexpr unsigned short firstBlock = 0x10;
    constexpr unsigned short lastBlock = 0xFF;
    for (unsigned short block = firstBlock; block <= lastBlock; ++block) {
        const char* creator = nullptr;
        const bool reserved =
            ioItem.findAndGetString(DcmTagKey(inStep.group, block), creator).good() && creator;
        const DcmTagKey key(inStep.group, static_cast<Uint16>(block << 8 | inStep.element));
        if (reserved && trimmed(creator) == inStep.creator && ioItem.tagExists(key))
            return key;
    }
    return std::nullopt;
}

DcmElement* findElement(DcmItem& ioItem, const DicomTagPath::Step& inStep)
{
    const auto key = inStep.creator.empty() ? DcmTagKey(inStep.group, inStep.element)
                                            : privateKey(ioItem, inStep).value_or(DCM_UndefinedTagKey);
    DcmElement* element = nullptr;
    ioItem.findAndGetElement(key, element);
    return element;
}

DcmItem* findItem(DcmItem& ioItem, const DicomTagPath::Step& inStep)
{
    DcmElement* element = findElement(ioItem, inStep);
    if (!element || element->ident() != EVR_SQ)
        return nullptr;
    return static_cast<DcmSequenceOfItems*>(element)->getItem(static_cast<unsigned long>(inStep.item));
}

bool isPixelData(const DicomTagPath::Step& inStep)
{
    return inStep.group == 0x7FE0 &&
           (inStep.element == 0x0008 || inStep.element == 0x0009 || inStep.element == 0x0010);
}

bool isSequence(const DicomTagPath::Step& inStep)
{
    return DcmTag(inStep.group, inStep.element).getEVR() == EVR_SQ;
}

/// A new element with the value \a inText, null when its VR doesn't take it.
std::unique_ptr<DcmElement> elementOfText(const DicomTagPath::Step& inStep, const QString& inText)
{
    const DcmTag tag(inStep.group, inStep.element);
    const DcmEVR vr = tag.getEVR();
    const bool number = vr == EVR_US || vr == EVR_SS || vr == EVR_xs || vr == EVR_UL || vr == EVR_SL ||
                        vr == EVR_UV || vr == EVR_SV || vr == EVR_FL || vr == EVR_FD || vr == EVR_AT;
    DcmElement* element = nullptr;
    if (number || tag.getVR().isaString())
        DcmItem::newDicomElement(element, tag);
    std::unique_ptr<DcmElement> owner(element);
    if (owner && owner->putString(inText.toUtf8().constData()).bad())
        owner.reset();
    return owner;
}

bool isAscii(const QString& inText)
{
    return std::all_of(inText.begin(), inText.end(), [](QChar c) { return c.unicode() < 0x80; });
}

/// What can be said of a file without building a data set: it isn't DICOM, ends too early, or is nested too
/// deep. Read for the rest.
DicomHeader::Outcome firstLook(const QString& inPath, QString& outReason)
{
    constexpr qint64 enough = 256;
    QFile file(inPath);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        outReason = QLatin1String("cannot be read: ") + file.errorString();
        return DicomHeader::Outcome::Unreadable;
    }
    if (!startsLikeDicom(file.read(enough), file.size())) {
        outReason = QStringLiteral("not a DICOM file");
        return DicomHeader::Outcome::NotDicom;
    }
    DicomFileScan scan(file);
    const DicomFileScan::Outcome scanned = scan.run();
    if (scanned == DicomFileScan::Outcome::BrokenOff || scanned == DicomFileScan::Outcome::TooDeep)
        outReason = scan.reason();
    else if (isNestedTooDeep(file, scan))
        outReason = DicomNesting::reason();
    else
        return DicomHeader::Outcome::Read;
    return DicomHeader::Outcome::Damaged;
}

} // namespace

struct DicomHeader::Record : public QSharedData
{
    Record() = default;

    Record(const Record& inOther)
        : QSharedData(inOther)
    {
        const std::scoped_lock lock(inOther.mutex);
        file = inOther.file;
        noteContext();
    }

    /// To be called after changes: every value needs these two of the data set.
    void noteContext()
    {
        characterSet = plainString(*file.getDataset(), DCM_SpecificCharacterSet);
        utcOffset = QString::fromStdString(plainString(*file.getDataset(), DCM_TimezoneOffsetFromUTC));
    }

    DcmItem& root(const DicomTagPath& inPath) const
    {
        DcmItem* const meta = file.getMetaInfo();
        return inPath.steps().front().group == metaGroup ? *meta : *file.getDataset();
    }

    mutable std::mutex mutex; ///< DCMTK's lists have cursors and values are read lazily.
    mutable DcmFileFormat file;
    std::string characterSet;
    QString utcOffset;
};

/// DCMTK is readied before its first object is made.
DicomHeader::Record* DicomHeader::makeRecord()
{
    DicomDictionary::instance();
    return new Record;
}

DicomHeader::DicomHeader()
    : d(makeRecord())
{
    d->file.getDataset()->putAndInsertString(DCM_SpecificCharacterSet, "ISO_IR 192");
    d->noteContext();
}

DicomHeader::DicomHeader(const DicomHeader& inOther) = default;
DicomHeader& DicomHeader::operator=(const DicomHeader& inOther) = default;
DicomHeader::~DicomHeader() = default;

DicomHeader::Outcome DicomHeader::readFile(const QString& inPath, DicomHeader& outHeader, QString& outReason)
{
    const Outcome look = firstLook(inPath, outReason);
    if (look != Outcome::Read)
        return look;
    DicomHeader header;
    DcmFileFormat& file = header.d->file;
    const OFCondition result =
        file.loadFile(QFile::encodeName(inPath).constData(), EXS_Unknown, EGL_noChange, longestKeptValue);
    if (result.bad()) {
        outReason = QLatin1String("damaged: ") + QString::fromLatin1(result.text());
        return Outcome::Damaged;
    }
    for (const DcmTagKey& key : {DCM_FloatPixelData, DCM_DoubleFloatPixelData, DCM_PixelData})
        file.getDataset()->findAndDeleteElement(key);
    header.d->noteContext();
    outHeader = header;
    const bool directory =
        plainString(*file.getMetaInfo(), DCM_MediaStorageSOPClassUID) == UID_MediaStorageDirectoryStorage;
    return directory ? Outcome::Directory : Outcome::Read;
}

QVariant DicomHeader::value(const DicomTagPath& inPath, QStringList* outProblems) const
{
    if (!inPath.isValid() || isPixelData(inPath.steps().back()))
        return {};
    const std::scoped_lock lock(d->mutex);
    DcmItem* item = &d->root(inPath);
    DicomValueContext context{
        .characterSet = d->characterSet, .utcOffset = d->utcOffset, .problems = outProblems};
    for (size_t i = 0; item && i + 1 < inPath.steps().size(); ++i) {
        item = findItem(*item, inPath.steps()[i]);
        if (item && item->tagExists(DCM_SpecificCharacterSet))
            context.characterSet = plainString(*item, DCM_SpecificCharacterSet);
    }
    DcmElement* const element = item ? findElement(*item, inPath.steps().back()) : nullptr;
    return element ? dicomValue(*element, context) : QVariant();
}

bool DicomHeader::setText(const DicomTagPath& inPath, const QString& inText)
{
    const auto& steps = inPath.steps();
    const bool allPlain =
        std::all_of(steps.begin(), steps.end(), [](const auto& s) { return s.creator.empty(); });
    if (!inPath.isValid() || inPath == characterSetPath || !allPlain ||
        !std::all_of(steps.begin(), steps.end() - 1, isSequence))
        return false;
    DcmItem* item = &d->root(inPath);
    if (!isAscii(inText) && d->characterSet != "ISO_IR 192")
        return false;
    auto element = elementOfText(steps.back(), inText);
    for (size_t i = 0; element && i + 1 < steps.size(); ++i) {
        if (item->findOrCreateSequenceItem(DcmTag(steps[i].group, steps[i].element), item, steps[i].item)
                .bad())
            return false;
    }
    const bool done = element && item->insert(element.release(), OFTrue).good();
    d->noteContext();
    return done;
}

} // namespace Ovg
