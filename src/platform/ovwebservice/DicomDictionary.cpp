#include "DicomDictionary.h"

#include <rnlib/RnLogFile.h>

#include "dcmtk/config/osconfig.h"
#include "dcmtk/dcmdata/dcdicent.h"
#include "dcmtk/dcmdata/dcdict.h"
#include "dcmtk/dcmdata/dcvr.h"
#include "dcmtk/oflog/oflog.h"

#include <QStringList>

namespace Ovg {

namespace {

// DCMTK marks names that have left the standard; the standard's own keywords have no such marks.
constexpr const char* retiredMarks[] = {"RETIRED_", "ACR_NEMA_"};

void silenceToolkit()
{
    for (const char* name : {"dcmtk.dcmdata", "dcmtk.ofstd"})
        OFLog::getLogger(name).setLogLevel(OFLogger::OFF_LOG_LEVEL);
}

void loadDefaultDictionary()
{
    const QStringList files =
        QString::fromLocal8Bit(DCM_DICT_DEFAULT_PATH).split(QLatin1Char(ENVIRONMENT_PATH_SEPARATOR));
    DcmDataDictionary& dictionary = dcmDataDict.wrlock();
    for (const QString& file : files)
        dictionary.loadDictionary(file.toLocal8Bit().constData(), OFFalse);
    dcmDataDict.wrunlock();
    if (!dcmDataDict.isDictionaryLoaded())
        getTheLogInstance().trace(3, "Studies", "No DICOM data dictionary: keywords are not known");
}

quint32 tagOf(const DcmDictEntry& inEntry)
{
    return quint32(inEntry.getGroup()) << 16 | inEntry.getElement();
}

} // namespace

const DicomDictionary& DicomDictionary::instance()
{
    static const DicomDictionary dictionary;
    return dictionary;
}

DicomDictionary::DicomDictionary()
{
    silenceToolkit();
    dcmEnableUnknownVRConversion.set(OFTrue);
    if (!dcmDataDict.isDictionaryLoaded())
        loadDefaultDictionary();
    DcmDataDictionary& dictionary = dcmDataDict.wrlock();
    for (auto it = dictionary.normalBegin(); it != dictionary.normalEnd(); ++it) {
        if (!(*it)->getPrivateCreator())
            add((*it)->getTagName(), tagOf(**it));
    }
    for (auto it = dictionary.repeatingBegin(); it != dictionary.repeatingEnd(); ++it) {
        if (!(*it)->getPrivateCreator())
            add((*it)->getTagName(), tagOf(**it));
    }
    dcmDataDict.wrunlock();
}

std::optional<quint32> DicomDictionary::tag(const QString& inKeyword) const
{
    const auto it = mTags.constFind(inKeyword);
    return it == mTags.constEnd() ? std::nullopt : std::optional<quint32>(*it);
}

void DicomDictionary::add(const char* inName, quint32 inTag)
{
    QString keyword = QString::fromLatin1(inName);
    for (const char* mark : retiredMarks) {
        if (keyword.startsWith(QLatin1String(mark)))
            keyword.remove(0, QLatin1String(mark).size());
    }
    mTags.insert(keyword, inTag);
    mKeywords.insert(inTag, keyword);
}

} // namespace Ovg
