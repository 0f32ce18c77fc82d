#include "DicomTagPath.h"

#include "DicomDictionary.h"

#include <QStringView>

namespace Ovg {

namespace {

/// Reads the text form from left to right. A function that can't go on gives false and leaves the place where
/// it is; nobody reads on after that.
class PathReader
{
public:
    explicit PathReader(QStringView inText)
        : mText(inText)
    {}

    bool atEnd() const { return mPlace == mText.size(); }

    bool skip(char inCharacter)
    {
        const bool there = !atEnd() && mText[mPlace] == QLatin1Char(inCharacter);
        mPlace += there ? 1 : 0;
        return there;
    }

    /// Exactly \a inDigits hexadecimal digits.
    bool hex(int inDigits, unsigned short& outNumber)
    {
        const QStringView digits = mText.mid(mPlace, inDigits);
        mPlace += digits.size();
        unsigned number = 0;
        for (const QChar c : digits) {
            const char16_t lower = c.unicode() | 0x20;
            if (c >= QLatin1Char('0') && c <= QLatin1Char('9'))
                number = number * 16 + (c.unicode() - u'0');
            else if (lower >= u'a' && lower <= u'f')
                number = number * 16 + (lower - u'a' + 10);
            else
                return false;
        }
        outNumber = static_cast<unsigned short>(number);
        return digits.size() == inDigits;
    }

    /// Text in quotes, a quote inside written twice.
    bool quoted(std::string& outText)
    {
        QString text;
        bool inside = skip('"');
        while (inside && !atEnd()) {
            const bool quote = mText[mPlace] == QLatin1Char('"');
            const QChar c = mText[mPlace++];
            inside = !quote || skip('"');
            if (inside)
                text += c;
        }
        outText = text.toStdString();
        return !inside && !text.isEmpty();
    }

    QString word()
    {
        const qsizetype start = mPlace;
        while (!atEnd() && mText[mPlace].unicode() < 0x80 && mText[mPlace].isLetterOrNumber())
            ++mPlace;
        return mText.mid(start, mPlace - start).toString();
    }

    /// Decimal digits without a sign.
    bool number(int& outNumber)
    {
        const QString digits = word();
        bool ok = !digits.isEmpty() && digits.front().isDigit();
        outNumber = ok ? digits.toInt(&ok) : 0;
        return ok;
    }

private:
    QStringView mText;
    qsizetype mPlace = 0;
};

bool readKeyword(PathReader& ioReader, DicomTagPath::Step& outStep)
{
    const auto tag = DicomDictionary::instance().tag(ioReader.word());
    if (!tag)
        return false;
    outStep.group = static_cast<unsigned short>(*tag >> 16);
    outStep.element = static_cast<unsigned short>(*tag & 0xFFFF);
    return true;
}

/// What stands behind the opening bracket of a tag in plain numbers.
bool readTag(PathReader& ioReader, DicomTagPath::Step& outStep)
{
    return ioReader.hex(4, outStep.group) && ioReader.skip(',') && ioReader.hex(4, outStep.element) &&
           ioReader.skip(')');
}

/// The same for group, creator and low byte.
bool readPrivateTag(PathReader& ioReader, DicomTagPath::Step& outStep)
{
    return ioReader.hex(4, outStep.group) && outStep.group % 2 == 1 && ioReader.skip(',') &&
           ioReader.quoted(outStep.creator) && ioReader.skip(',') && ioReader.hex(2, outStep.element) &&
           ioReader.skip(')');
}

bool readElement(PathReader& ioReader, DicomTagPath::Step& outStep)
{
    if (!ioReader.skip('('))
        return readKeyword(ioReader, outStep);
    PathReader privateReader = ioReader;
    if (!readPrivateTag(privateReader, outStep))
        return readTag(ioReader, outStep = {});
    ioReader = privateReader;
    return true;
}

/// One step. \a outLast tells whether the text ends behind it; only then may there be no item number.
bool readStep(PathReader& ioReader, DicomTagPath::Step& outStep, bool& outLast)
{
    if (!readElement(ioReader, outStep))
        return false;
    outLast = ioReader.atEnd();
    if (ioReader.skip('[') && !(ioReader.number(outStep.item) && ioReader.skip(']')))
        return false;
    return outLast || ioReader.skip('.');
}

QString hex(unsigned short inNumber, int inDigits)
{
    return QString::number(inNumber, 16).toUpper().rightJustified(inDigits, QLatin1Char('0'));
}

QString privateText(const DicomTagPath::Step& inStep)
{
    QString creator = QString::fromStdString(inStep.creator);
    creator.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('(') + hex(inStep.group, 4) + QLatin1String(",\"") + creator + QLatin1String("\",") +
           hex(inStep.element, 2) + QLatin1Char(')');
}

QString elementText(const DicomTagPath::Step& inStep)
{
    const QString keyword = DicomDictionary::instance().keyword(quint32(inStep.group) << 16 | inStep.element);
    if (!inStep.creator.empty())
        return privateText(inStep);
    return keyword.isEmpty() ? dicomTagText(inStep.group, inStep.element) : keyword;
}

} // namespace

QString dicomTagText(unsigned short inGroup, unsigned short inElement)
{
    return QLatin1Char('(') + hex(inGroup, 4) + QLatin1Char(',') + hex(inElement, 4) + QLatin1Char(')');
}

DicomTagPath::DicomTagPath(unsigned short inGroup, unsigned short inElement)
    : mSteps{Step{.group = inGroup, .element = inElement}}
{}

DicomTagPath DicomTagPath::fromText(const QString& inText)
{
    PathReader reader(inText);
    DicomTagPath path;
    for (bool last = false; !last;) {
        if (!readStep(reader, path.mSteps.emplace_back(), last))
            return {};
    }
    return path;
}

QString DicomTagPath::toText() const
{
    QString text;
    for (const Step& step : mSteps) {
        if (!text.isEmpty())
            text += QLatin1Char('.');
        text += elementText(step);
        if (step.item > 0)
            text += QStringLiteral("[%1]").arg(step.item);
    }
    return text;
}

} // namespace Ovg
