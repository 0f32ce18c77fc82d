#include "KySqlRows.h"

#include <QtCore/QDateTime>
#include <QtSql/QSqlQuery>
#include <QtSql/QSqlRecord>

#include <charconv>

namespace {

/// What a column's values are, in the order in which one form can stand for those before it.
enum class Form
{
    Unknown,
    Bool,
    Whole,
    Real,
    Bytes,
    Text
};

Form formOf(const QVariant& inValue)
{
    switch (inValue.typeId()) {
    case QMetaType::Bool:
        return Form::Bool;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return Form::Whole;
    case QMetaType::Float:
    case QMetaType::Double:
        return Form::Real;
    case QMetaType::QByteArray:
        return Form::Bytes;
    default:
        return Form::Text;
    }
}

Form common(Form inA, Form inB)
{
    if (inA == Form::Unknown || inA == inB)
        return inB;
    const bool areNumbers =
        (inA == Form::Whole || inA == Form::Real) && (inB == Form::Whole || inB == Form::Real);
    return areNumbers ? Form::Real : Form::Text;
}

const char* wordOf(Form inForm)
{
    switch (inForm) {
    case Form::Bool:
        return "bit";
    case Form::Whole:
        return "bigint";
    case Form::Real:
        return "float";
    case Form::Bytes:
        return "varbinary";
    default:
        return "nvarchar";
    }
}

template <class Number>
std::string numberText(Number inNumber)
{
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, inNumber).ptr;
    return std::string(text, end);
}

/// In one step, since there are many.
std::string latin1(const QString& inText)
{
    std::string text(std::size_t(inText.size()), '?');
    bool isPlain = true;
    for (qsizetype i = 0; i < inText.size(); ++i) {
        const ushort c = inText.at(i).unicode();
        isPlain = isPlain && c < 256;
        text[std::size_t(i)] = char(c);
    }
    return isPlain ? text : inText.toLatin1().toStdString();
}

/// With milliseconds; with the offset where the column keeps one.
std::string dateText(const QDateTime& inDate, bool inHasOffset)
{
    const QDateTime date = inHasOffset ? inDate.toOffsetFromUtc(inDate.offsetFromUtc()) : inDate;
    return latin1(date.toString(Qt::ISODateWithMs));
}

std::string textOf(const QVariant& inValue, bool inHasOffset)
{
    switch (inValue.typeId()) {
    case QMetaType::Bool:
        return inValue.toBool() ? "True" : "False";
    case QMetaType::Int:
    case QMetaType::LongLong:
        return numberText(inValue.toLongLong());
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return numberText(inValue.toULongLong());
    case QMetaType::Float:
    case QMetaType::Double:
        return numberText(inValue.toDouble());
    case QMetaType::QByteArray:
        return "\\x" + inValue.toByteArray().toHex().toStdString();
    case QMetaType::QDateTime:
        return dateText(inValue.toDateTime(), inHasOffset);
    case QMetaType::QTime:
        return latin1(inValue.toTime().toString(Qt::ISODateWithMs));
    case QMetaType::QString:
        return latin1(*static_cast<const QString*>(inValue.constData()));
    default:
        return latin1(inValue.toString());
    }
}

/// What a database without a type for it keeps as a number or a text, in the form of the type word.
class Column
{
public:
    explicit Column(const QString& inWord)
        : mWord(inWord.toStdString())
        , mIsBit(mWord == "bit")
        , mIsDate(mWord.starts_with("datetime") || mWord == "smalldatetime")
        , mHasOffset(mWord == "datetimeoffset")
    {}

    std::string text(const QVariant& inValue)
    {
        if (mWord.empty())
            mForm = common(mForm, formOf(inValue));
        std::string text = textOf(inValue, mHasOffset);
        if (mIsBit && (text == "1" || text == "0"))
            return text == "1" ? "True" : "False";
        if (mIsDate && text.size() > 10 && text[10] == ' ')
            text[10] = 'T';
        return text;
    }

    std::string word() const { return mWord.empty() ? wordOf(mForm) : mWord; }

private:
    const std::string mWord;
    const bool mIsBit;
    const bool mIsDate;
    const bool mHasOffset;
    Form mForm = Form::Unknown;
};

} // namespace

void KySqlRows::read(QSqlQuery& ioQuery, const QStringList& inTypes, OvDatabase::Rows& outRows,
                     std::vector<std::string>& outColumnTypes)
{
    const int count = ioQuery.record().count();
    std::vector<Column> columns;
    columns.reserve(std::size_t(count));
    for (int i = 0; i < count; ++i)
        columns.emplace_back(inTypes.value(i));

    while (ioQuery.next()) {
        OvDatabase::Row& row = outRows.emplace_back();
        row.reserve(std::size_t(count));
        for (int i = 0; i < count; ++i) {
            const QVariant value = ioQuery.value(i);
            if (value.isNull())
                row.emplace_back();
            else
                row.emplace_back(columns[std::size_t(i)].text(value));
        }
    }
    for (const Column& column : columns)
        outColumnTypes.push_back(column.word());
}
