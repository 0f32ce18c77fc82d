#include "KyScriptRichEditControl.h"

#include <QtCore/QRegularExpression>

#include <cstring>

namespace {

/// What a control may say that its text has, in bytes: more than any has, and less than memory.
constexpr std::intptr_t LongestText = std::intptr_t(1) << 30;

struct Match
{
    qsizetype start = -1;
    qsizetype end = -1;
};

Match firstMatch(const QVariant& inPattern, const QString& inText)
{
    if (inPattern.typeId() == QMetaType::QString) {
        const QString search = inPattern.toString();
        const qsizetype index = inText.indexOf(search, 0, Qt::CaseSensitive);
        return {index, index + search.size()};
    }
    if (inPattern.typeId() != QMetaType::QRegularExpression)
        return {};
    QRegularExpression expression = inPattern.toRegularExpression();
    expression.setPatternOptions(QRegularExpression::InvertedGreedinessOption);
    QRegularExpressionMatch match;
    const qsizetype index = expression.isValid() ? inText.indexOf(expression, 0, &match) : -1;
    return {index, index + match.capturedLength(0)};
}

} // namespace

KyScriptRichEditControl::KyScriptRichEditControl(RnWindows& inWindows, RnWindows::Window inWindow,
                                                 bool inConvertCRLFToLF)
    : mWindows(inWindows)
    , mWindow(inWindow)
    , mConvertCRLFToLF(inConvertCRLFToLF)
{}

QString KyScriptRichEditControl::text() const
{
    const std::intptr_t length = mWindows.textLength(mWindow);
    if (length < 0 || length > LongestText)
        return QString();
    std::string buffer(std::size_t(length) + 1, '\0');
    mWindows.text(mWindow, buffer.size(), buffer.data());
    buffer.resize(std::strlen(buffer.c_str()));
    QString text = QString::fromStdU16String(mWindows.fromLocal8Bit(buffer));
    if (mConvertCRLFToLF)
        text.replace(QLatin1String("\r\n"), QLatin1String("\n"), Qt::CaseSensitive);
    return text;
}

RnWindows::Selection KyScriptRichEditControl::selection() const
{
    return mWindows.selection(mWindow);
}

void KyScriptRichEditControl::setSelection(int inStart, int inEnd)
{
    mWindows.setSelection(mWindow, inStart, inEnd);
}

void KyScriptRichEditControl::replaceSelection(const QString& inText, bool inAllowUndo)
{
    mWindows.replaceSelection(mWindow, inAllowUndo, mWindows.toLocal8Bit(inText.toStdU16String()));
}

void KyScriptRichEditControl::replace(const QVariant& inPattern, const QString& inText)
{
    const RnWindows::Selection before = selection();
    const Match match = firstMatch(inPattern, text());
    if (match.start < 0)
        return;
    setSelection(int(match.start), int(match.end));
    replaceSelection(inText, true);

    const qint64 delta = inText.size() + match.start - match.end;
    const qint64 start = before.start > match.end ? before.start + delta : before.start;
    const qint64 end = before.end >= match.end ? before.end + delta : before.end;
    setSelection(int(start), int(end));
}

void KyScriptRichEditControl::insertAfter(const QString& inSearch, const QString& inText)
{
    const RnWindows::Selection before = selection();
    const qsizetype index = text().indexOf(inSearch, 0, Qt::CaseSensitive);
    if (index < 0)
        return;
    const qsizetype place = index + inSearch.size();
    setSelection(int(place), int(place));
    replaceSelection(inText, true);

    const qint64 start = before.start > place ? before.start + inText.size() : before.start;
    const qint64 end = before.end > place ? before.end + inText.size() : before.end;
    setSelection(int(start), int(end));
}
