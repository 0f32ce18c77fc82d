#include "KyScriptIdGenerator.h"

#include <ovbase/OvHash.h>

#include <QtCore/QCryptographicHash>
#include <QtCore/QUuid>
#include <QtCore/QtEndian>

namespace {

constexpr char Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
constexpr quint32 AlphabetSize = sizeof(Alphabet) - 1;
constexpr int MaxDigits = 20;
constexpr quint32 MaxStart = 16;
constexpr double TwoToMinus32 = 2.3283064365386963e-10;

QByteArray digest(const QString& inSource)
{
    return QCryptographicHash::hash(inSource.toUtf8(), QCryptographicHash::Sha1);
}

/// The byte widens with its sign, and counts as unsigned only then. That is part of the hash's definition.
char digitOf(char inByte)
{
    const auto widened = static_cast<quint32>(static_cast<qint32>(static_cast<qint8>(inByte)));
    return Alphabet[widened % AlphabetSize];
}

} // namespace

KyScriptIdGenerator::KyScriptIdGenerator(QObject* parent)
    : QObject(parent)
{}

QString KyScriptIdGenerator::generateId() const
{
    return QString::fromLatin1(Ovg::generateHash32());
}

QString KyScriptIdGenerator::generateUuid(bool withoutCurlyBraces) const
{
    const QString uuid = QUuid::createUuid().toString();
    return withoutCurlyBraces ? uuid.mid(1, uuid.size() - 2) : uuid;
}

QString KyScriptIdGenerator::asciiHash(const QString& source, int numDigits) const
{
    const int count = numDigits < 1 || numDigits > MaxDigits ? MaxDigits : numDigits;
    const QByteArray bytes = digest(source);
    QString hash;
    for (int i = 0; i < count; ++i)
        hash += QLatin1Char(digitOf(bytes.at(i)));
    return hash;
}

float KyScriptIdGenerator::sigmoidHash(const QString& source, int startIdx) const
{
    const quint32 start = static_cast<quint32>(startIdx) > MaxStart ? 0 : static_cast<quint32>(startIdx);
    const auto number = qFromLittleEndian<quint32>(digest(source).constData() + start);
    return static_cast<float>(number * TwoToMinus32);
}
