#include "DicomValue.h"

#include "DicomCharacterSet.h"
#include "DicomDateTime.h"
#include "DicomTagPath.h"

#include "dcmtk/config/osconfig.h"
#include "dcmtk/dcmdata/dcelem.h"
#include "dcmtk/dcmdata/dcsequen.h"

#include <QStringView>

#include <cmath>
#include <limits>
#include <optional>

namespace Ovg {

namespace {

/// Lists go to scripts as they are, while a single date or time is converted on the way. So in lists a date
/// is an instant, its local midnight, and a time is text.
QVariant forList(const QVariant& inValue)
{
    if (inValue.typeId() == QMetaType::QDate)
        return inValue.toDate().startOfDay();
    if (inValue.typeId() == QMetaType::QTime)
        return inValue.toTime().toString(Qt::ISODateWithMs);
    return inValue;
}

QVariant single(const QVariantList& inValues)
{
    if (inValues.isEmpty())
        return QString(QLatin1String(""));
    if (inValues.size() == 1)
        return inValues.constFirst();
    QVariantList list;
    for (const QVariant& value : inValues)
        list += forList(value);
    return list;
}

QVariant integer(qint64 inNumber)
{
    if (inNumber >= std::numeric_limits<int>::min() && inNumber <= std::numeric_limits<int>::max())
        return static_cast<int>(inNumber);
    return static_cast<qlonglong>(inNumber);
}

QVariant decimal(double inNumber)
{
    return inNumber;
}

QVariant bigInteger(Uint64 inNumber)
{
    if (inNumber > static_cast<Uint64>(std::numeric_limits<qint64>::max()))
        return static_cast<double>(inNumber);
    return integer(static_cast<qint64>(inNumber));
}

QVariant tagNumber(const DcmTagKey& inKey)
{
    return dicomTagText(inKey.getGroup(), inKey.getElement());
}

/// All values that \a inGet, one of DcmElement's typed getters, gives, each made a QVariant by \a inMake.
template <typename Native, typename Make>
QVariant binary(DcmElement& ioElement, OFCondition (DcmElement::*inGet)(Native&, const unsigned long),
                Make inMake)
{
    QVariantList values;
    Native native{};
    for (unsigned long i = 0; (ioElement.*inGet)(native, i).good(); ++i)
        values += inMake(native);
    return single(values);
}

QVariant bytes(DcmElement& ioElement)
{
    QByteArray value(static_cast<qsizetype>(ioElement.getLength()), '\0');
    if (value.isEmpty())
        return QByteArray("");
    const OFCondition read = ioElement.getPartialValue(value.data(), 0, static_cast<Uint32>(value.size()),
                                                       nullptr, EBO_LittleEndian);
    return read.good() ? QVariant(value) : QVariant();
}

template <typename Value>
QVariant toVariant(const std::optional<Value>& inValue)
{
    return inValue ? QVariant(*inValue) : QVariant();
}

QVariant integerString(const QString& inText)
{
    bool ok = false;
    const qint64 value = inText.toLongLong(&ok);
    return ok ? integer(value) : QVariant();
}

QVariant decimalString(const QString& inText)
{
    bool ok = false;
    const double value = inText.toDouble(&ok);
    return ok && std::isfinite(value) ? QVariant(value) : QVariant();
}

/// One value that stands as text in the data set; invalid when its VR forbids it.
QVariant convert(DcmEVR inVr, const QString& inText, const QString& inUtcOffset)
{
    switch (inVr) {
    case EVR_DA:
        return toVariant(parseDicomDate(inText));
    case EVR_TM:
        return toVariant(parseDicomTime(inText));
    case EVR_DT:
        return toVariant(parseDicomDateTime(inText, parseDicomUtcOffset(inUtcOffset)));
    case EVR_IS:
        return integerString(inText);
    case EVR_DS:
        return decimalString(inText);
    default:
        return inText;
    }
}

/// The VRs of longer text, in which blanks at the start count.
bool keepsIndent(DcmEVR inVr)
{
    return inVr == EVR_LT || inVr == EVR_ST || inVr == EVR_UT || inVr == EVR_UC || inVr == EVR_UR;
}

bool isPadding(QChar inCharacter)
{
    return inCharacter == u' ' || inCharacter == u'\0';
}

/// Without the blanks that carry no meaning: those at the end, and in short texts those at the start too.
QString withoutPadding(const QString& inText, bool inKeepsIndent)
{
    QStringView text = inText;
    while (!text.isEmpty() && isPadding(text.back()))
        text.chop(1);
    while (!inKeepsIndent && !text.isEmpty() && isPadding(text.front()))
        text = text.mid(1);
    return text.isEmpty() ? QStringLiteral("") : text.toString();
}

void addProblem(const DicomValueContext& inContext, DcmElement& ioElement, const QString& inText)
{
    if (inContext.problems && !inText.isEmpty())
        *inContext.problems += tagNumber(ioElement.getTag()).toString() + QLatin1String(": ") + inText;
}

DicomCharacterSet::Structure structure(DcmEVR inVr)
{
    if (inVr == EVR_PN)
        return DicomCharacterSet::Structure::Names;
    return keepsIndent(inVr) && inVr != EVR_UC ? DicomCharacterSet::Structure::Plain
                                               : DicomCharacterSet::Structure::Values;
}

/// The values of an element whose VR is one of text, still as text.
QStringList texts(DcmElement& ioElement, std::string_view inBytes, const DicomValueContext& inContext)
{
    const DcmEVR vr = ioElement.ident();
    const bool affected = DcmVR(vr).isAffectedBySpecificCharacterSet();
    QString problem;
    const QStringList values = DicomCharacterSet(affected ? inContext.characterSet : std::string())
                                   .decode(inBytes, structure(vr), problem);
    addProblem(inContext, ioElement, problem);
    return values;
}

QVariant text(DcmElement& ioElement, const DicomValueContext& inContext)
{
    char* start = nullptr;
    Uint32 length = 0;
    if (ioElement.getString(start, length).bad())
        return {};
    const DcmEVR vr = ioElement.ident();
    QVariantList values;
    for (const QString& part : texts(ioElement, {start ? start : "", start ? length : 0}, inContext)) {
        const QString plain = withoutPadding(part, keepsIndent(vr));
        const QVariant value = plain.isEmpty() ? plain : convert(vr, plain, inContext.utcOffset);
        if (!value.isValid())
            addProblem(inContext, ioElement,
                       QStringLiteral("\"%1\" is no %2").arg(plain, QLatin1String(DcmVR(vr).getVRName())));
        values += value.isValid() ? value : plain;
    }
    return single(values);
}

} // namespace

QVariant dicomValue(DcmElement& ioElement, const DicomValueContext& inContext)
{
    switch (ioElement.ident()) {
    case EVR_SQ:
        return static_cast<int>(static_cast<DcmSequenceOfItems&>(ioElement).card());
    case EVR_US:
        return binary(ioElement, &DcmElement::getUint16, integer);
    case EVR_SS:
        return binary(ioElement, &DcmElement::getSint16, integer);
    case EVR_UL:
    case EVR_up:
        return binary(ioElement, &DcmElement::getUint32, integer);
    case EVR_SL:
        return binary(ioElement, &DcmElement::getSint32, integer);
    case EVR_UV:
        return binary(ioElement, &DcmElement::getUint64, bigInteger);
    case EVR_SV:
        return binary(ioElement, &DcmElement::getSint64, integer);
    case EVR_FL:
        return binary(ioElement, &DcmElement::getFloat32, decimal);
    case EVR_FD:
        return binary(ioElement, &DcmElement::getFloat64, decimal);
    case EVR_AT:
        return binary(ioElement, &DcmElement::getTagVal, tagNumber);
    default:
        return ioElement.isaString() ? text(ioElement, inContext) : bytes(ioElement);
    }
}

} // namespace Ovg
