#include "KySqlScript.h"

#include <algorithm>

namespace {

bool isNameStart(QChar inChar)
{
    return inChar == QLatin1Char('_') || inChar.isLetter();
}

bool isNamePart(QChar inChar)
{
    return isNameStart(inChar) || inChar.isDigit();
}

/// Behind the quoted text that begins at \a inBegin; a quote twice is one inside.
qsizetype endOfQuoted(QStringView inText, qsizetype inBegin)
{
    const QChar quote = inText.at(inBegin) == QLatin1Char('[') ? QLatin1Char(']') : inText.at(inBegin);
    const qsizetype end = inText.indexOf(quote, inBegin + 1);
    return end < 0 ? inText.size() : end + 1;
}

/// Behind the comment that begins at \a inBegin; \a inBegin itself when none does.
qsizetype endOfComment(QStringView inText, qsizetype inBegin)
{
    const QStringView head = inText.mid(inBegin, 2);
    if (head == QLatin1String("--")) {
        const qsizetype end = inText.indexOf(QLatin1Char('\n'), inBegin);
        return end < 0 ? inText.size() : end;
    }
    if (head == QLatin1String("/*")) {
        const qsizetype end = inText.indexOf(QLatin1String("*/"), inBegin + 2);
        return end < 0 ? inText.size() : end + 2;
    }
    return inBegin;
}

qsizetype endOfName(QStringView inText, qsizetype inBegin)
{
    qsizetype end = inBegin;
    while (end < inText.size() && isNamePart(inText.at(end)))
        ++end;
    return end;
}

bool isParameterAt(QStringView inText, qsizetype inAt)
{
    const bool isColon = inText.at(inAt) == QLatin1Char(':') && inAt + 1 < inText.size();
    const bool isCast = inAt > 0 && inText.at(inAt - 1) == QLatin1Char(':');
    return isColon && !isCast && isNameStart(inText.at(inAt + 1));
}

} // namespace

KySqlScript::KySqlScript(const QString& inText)
{
    const QStringView text(inText);
    Statement statement;
    bool hasContent = false;
    const auto finish = [&] {
        if (hasContent)
            mStatements.push_back({statement.text.trimmed(), statement.parameters});
        statement = Statement();
        hasContent = false;
    };

    for (qsizetype at = 0; at < text.size();) {
        const QChar c = text.at(at);
        qsizetype end = endOfComment(text, at);
        if (end > at) { // left out: what a statement is told by is its text alone
            readComment(text.mid(at, end - at));
            at = end;
            continue;
        }
        end = at + 1;
        if (c == QLatin1Char(';')) {
            finish();
            at = end;
            continue;
        }
        if (QStringLiteral("'\"`[").contains(c)) {
            end = endOfQuoted(text, at);
        } else if (isParameterAt(text, at)) {
            end = endOfName(text, at + 1);
            const QString name = text.mid(at + 1, end - at - 1).toString();
            if (!statement.parameters.contains(name))
                statement.parameters.append(name);
        } else if (isNameStart(c)) {
            end = endOfName(text, at);
        }
        hasContent = hasContent || !c.isSpace();
        statement.text += text.mid(at, end - at);
        at = end;
    }
    finish();
}

void KySqlScript::readComment(QStringView inComment)
{
    const QString comment = inComment.mid(2).toString().trimmed();
    const QLatin1String key("columns:");
    if (!mColumnTypes.isEmpty() || !comment.startsWith(key, Qt::CaseInsensitive))
        return;
    for (const QString& word : comment.mid(key.size()).split(QLatin1Char(',')))
        mColumnTypes.append(word.trimmed().toLower());
}

bool KySqlScript::hasParameter(const QString& inName) const
{
    return std::any_of(mStatements.begin(), mStatements.end(), [&](const Statement& statement) {
        return statement.parameters.contains(inName, Qt::CaseInsensitive);
    });
}
