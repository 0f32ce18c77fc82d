#include "DicomCharacterSet.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>

namespace Ovg {

namespace {

enum class Coding
{
    Ascii,
    JapaneseRoman,    ///< JIS X 0201: ASCII with a yen sign and an overline.
    JapaneseKatakana, ///< JIS X 0201, half-width.
    Single,           ///< One byte each, by a codec.
    Double,           ///< Two bytes each, by a codec that wants the high bits set.
};

/// One coded character set of ISO 2022: its registration, how it is called and what decodes it.
struct CodedSet
{
    int registration;
    const char* escape; ///< What follows ESC.
    bool high;          ///< Lives in G1, bytes from 0x80 on; else in G0.
    Coding coding;
    const char* codec = nullptr;
    char prefix = 0; ///< Byte that the codec wants before each character.
};

// PS3.3 tables C.12-2 to C.12-4. "$@" is the older form of "$B", still met in Japanese data.
constexpr std::array<CodedSet, 19> codedSets{{
    {6, "(B", false, Coding::Ascii},
    {14, "(J", false, Coding::JapaneseRoman},
    {13, ")I", true, Coding::JapaneseKatakana},
    {100, "-A", true, Coding::Single, "ISO-8859-1"},
    {101, "-B", true, Coding::Single, "ISO-8859-2"},
    {109, "-C", true, Coding::Single, "ISO-8859-3"},
    {110, "-D", true, Coding::Single, "ISO-8859-4"},
    {144, "-L", true, Coding::Single, "ISO-8859-5"},
    {127, "-G", true, Coding::Single, "ISO-8859-6"},
    {126, "-F", true, Coding::Single, "ISO-8859-7"},
    {138, "-H", true, Coding::Single, "ISO-8859-8"},
    {148, "-M", true, Coding::Single, "ISO-8859-9"},
    {203, "-b", true, Coding::Single, "ISO-8859-15"},
    {166, "-T", true, Coding::Single, "TIS-620"},
    {87, "$B", false, Coding::Double, "EUC-JP"},
    {42, "$@", false, Coding::Double, "EUC-JP"},
    {159, "$(D", false, Coding::Double, "EUC-JP", '\x8f'},
    {149, "$)C", true, Coding::Double, "EUC-KR"},
    {58, "$)A", true, Coding::Double, "GB18030"},
}};

constexpr int asciiSet = 0;
constexpr int romanSet = 1;
constexpr int katakanaSet = 2;
constexpr int noSet = -1;

constexpr char escapeByte = '\x1b';

bool isHigh(char inByte)
{
    return (inByte & '\x80') != 0;
}

bool isPlainAscii(std::string_view inBytes)
{
    return std::none_of(inBytes.begin(), inBytes.end(), [](char c) { return isHigh(c) || c == escapeByte; });
}

QString latin1(std::string_view inBytes)
{
    return QString::fromLatin1(inBytes.data(), static_cast<qsizetype>(inBytes.size()));
}

/// Nothing but the codec's replacement character tells of an unknown byte in some of the codecs.
bool decodeBy(const char* inCodec, std::string_view inBytes, QString& outText)
{
    QStringDecoder decoder(inCodec, QStringDecoder::Flag::Stateless);
    if (!decoder.isValid())
        return false;
    outText = decoder.decode(QByteArrayView(inBytes.data(), static_cast<qsizetype>(inBytes.size())));
    return !decoder.hasError() && !outText.contains(QChar::ReplacementCharacter);
}

/// The number in "ISO_IR 100" or "ISO 2022 IR 100", whatever joins the words; 0 for other terms.
int registration(const QString& inTerm)
{
    const qsizetype ir = inTerm.indexOf(QLatin1String("IR"));
    return ir > 0 && inTerm.startsWith(QLatin1String("ISO")) ? inTerm.mid(ir + 3).toInt() : 0;
}

int setOfRegistration(int inRegistration)
{
    for (size_t i = 0; i < codedSets.size(); ++i) {
        if (codedSets[i].registration == inRegistration)
            return static_cast<int>(i);
    }
    return noSet;
}

/// Goes through a text with code extensions byte by byte, and decodes what lies between two changes of the
/// set in one go.
class ExtendedDecoder
{
public:
    ExtendedDecoder(std::string_view inBytes, DicomCharacterSet::Structure inStructure, int inG0, int inG1)
        : mBytes(inBytes)
        , mStructure(inStructure)
        , mInitialG0(inG0)
        , mInitialG1(inG1)
        , mG0(inG0)
        , mG1(inG1)
    {}

    QStringList decode()
    {
        while (mPlace < mBytes.size())
            step();
        endValue();
        return mValues;
    }

    bool fits() const { return mFits; }

private:
    void step()
    {
        const char c = mBytes[mPlace];
        if (c == escapeByte)
            changeSet();
        else if (isHigh(c))
            putCharacter(mG1);
        else if (codedSets[static_cast<size_t>(mG0)].coding == Coding::Double && c > ' ')
            putCharacter(mG0);
        else
            putLow(c);
    }

    void changeSet()
    {
        ++mPlace;
        for (size_t i = 0; i < codedSets.size(); ++i) {
            const std::string_view escape = codedSets[i].escape;
            if (mBytes.substr(mPlace, escape.size()) == escape) {
                (codedSets[i].high ? mG1 : mG0) = static_cast<int>(i);
                mPlace += escape.size();
                return;
            }
        }
        mFits = false;
    }

    void putCharacter(int inSet)
    {
        const bool pair = inSet != noSet && codedSets[static_cast<size_t>(inSet)].coding == Coding::Double;
        const size_t length = std::min<size_t>(pair ? 2 : 1, mBytes.size() - mPlace);
        startRun(inSet);
        if (pair && codedSets[static_cast<size_t>(inSet)].prefix)
            mRun += codedSets[static_cast<size_t>(inSet)].prefix;
        for (const char c : mBytes.substr(mPlace, length))
            mRun += pair ? static_cast<char>(c | '\x80') : c;
        mPlace += length;
    }

    /// A byte below 0x80 that stands for itself. Delimiters and the ends of lines bring the initial sets
    /// back.
    void putLow(char inByte)
    {
        const bool values = mStructure != DicomCharacterSet::Structure::Plain;
        const bool names = mStructure == DicomCharacterSet::Structure::Names;
        ++mPlace;
        if (values && inByte == '\\') {
            endValue();
            return;
        }
        startRun(mG0 == romanSet ? romanSet : asciiSet);
        mRun += inByte;
        if (std::string_view(names ? "\t\n\f\r^=" : "\t\n\f\r").find(inByte) != std::string_view::npos)
            resetSets();
    }

    /// Where G1 is empty at first it keeps its last set: many writers don't name it again behind a delimiter.
    void resetSets()
    {
        mG0 = mInitialG0;
        if (mInitialG1 != noSet)
            mG1 = mInitialG1;
    }

    void endValue()
    {
        endRun();
        mValues += mValue;
        mValue.clear();
        resetSets();
    }

    void startRun(int inSet)
    {
        if (inSet != mRunSet)
            endRun();
        mRunSet = inSet;
    }

    void endRun()
    {
        if (!mRun.empty())
            mValue += decodeRun();
        mRun.clear();
    }

    QString decodeRun()
    {
        if (mRunSet == asciiSet)
            return latin1(mRun);
        if (mRunSet == romanSet)
            return latin1(mRun).replace(u'\\', u'\u00a5').replace(u'~', u'\u203e');
        if (mRunSet == katakanaSet)
            return decodeKatakana();
        QString text;
        if (mRunSet != noSet && decodeBy(codedSets[static_cast<size_t>(mRunSet)].codec, mRun, text))
            return text;
        mFits = false;
        return latin1(mRun);
    }

    QString decodeKatakana()
    {
        constexpr unsigned char first = 0xa1;
        constexpr unsigned char last = 0xdf;
        QString text;
        for (const char c : mRun) {
            const auto byte = static_cast<unsigned char>(c);
            const bool known = byte >= first && byte <= last;
            mFits = mFits && known;
            text += known ? QChar(0xff61 + byte - first) : QChar(char16_t(byte));
        }
        return text;
    }

    const std::string_view mBytes;
    const DicomCharacterSet::Structure mStructure;
    const int mInitialG0;
    const int mInitialG1;
    int mG0;
    int mG1;
    size_t mPlace = 0;
    std::string mRun;
    int mRunSet = asciiSet;
    QString mValue;
    QStringList mValues;
    bool mFits = true;
};

} // namespace

DicomCharacterSet::DicomCharacterSet(std::string_view inTerms)
    : mTerms(inTerms)
    , mG0(asciiSet)
    , mG1(noSet)
{
    const QStringList terms = latin1(inTerms).split(QLatin1Char('\\'));
    for (qsizetype i = 0; i < terms.size(); ++i)
        addTerm(terms[i].trimmed(), i == 0);
}

void DicomCharacterSet::addTerm(const QString& inTerm, bool inFirst)
{
    const int number = registration(inTerm);
    const int set = setOfRegistration(number);
    const bool whole = number == 192 || inTerm == QLatin1String("GB18030") || inTerm == QLatin1String("GBK");
    if (!inTerm.isEmpty() && !whole && set == noSet)
        mKnown = false;
    if (!inFirst || inTerm.isEmpty())
        return;
    if (whole)
        mWholeCodec = number == 192 ? "UTF-8" : inTerm == QLatin1String("GBK") ? "GBK" : "GB18030";
    else if (set == katakanaSet || set == romanSet)
        mG0 = romanSet;
    if (set == romanSet)
        mG1 = katakanaSet;
    else if (set != noSet && codedSets[static_cast<size_t>(set)].high)
        mG1 = set;
}

QStringList DicomCharacterSet::decode(std::string_view inBytes, Structure inStructure,
                                      QString& outProblem) const
{
    if (isPlainAscii(inBytes) && mG0 == asciiSet)
        return inStructure == Structure::Plain ? QStringList(latin1(inBytes))
                                               : latin1(inBytes).split(QLatin1Char('\\'));
    return mKnown && !mWholeCodec ? decodeExtended(inBytes, inStructure, outProblem)
                                  : decodeWhole(inBytes, inStructure, outProblem);
}

QStringList DicomCharacterSet::decodeWhole(std::string_view inBytes, Structure inStructure,
                                           QString& outProblem) const
{
    QString text;
    if (!mKnown || !decodeBy(mWholeCodec, inBytes, text)) {
        text = latin1(inBytes);
        outProblem = problem();
    }
    return inStructure == Structure::Plain ? QStringList(text) : text.split(QLatin1Char('\\'));
}

QStringList DicomCharacterSet::decodeExtended(std::string_view inBytes, Structure inStructure,
                                              QString& outProblem) const
{
    ExtendedDecoder decoder(inBytes, inStructure, mG0, mG1);
    const QStringList values = decoder.decode();
    if (!decoder.fits())
        outProblem = problem();
    return values;
}

QString DicomCharacterSet::problem() const
{
    return (mKnown ? QStringLiteral("text doesn't fit the character set \"%1\" and is read as Latin-1")
                   : QStringLiteral("unknown character set \"%1\", text is read as Latin-1"))
        .arg(latin1(mTerms));
}

} // namespace Ovg
