#include "KyScriptOutputFile.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <filesystem>
#include <system_error>

namespace {

bool isPipe(const QString& inPath)
{
    std::error_code ignored;
    return std::filesystem::is_fifo(QFile::encodeName(inPath).toStdString(), ignored);
}

} // namespace

QString KyScriptOutputFile::path(const QString& inDirectory, const QString& inFilename,
                                 bool inAppendTimestamp, const QString& inExtension)
{
    QString path = inDirectory + QLatin1Char('/') + inFilename;
    if (inAppendTimestamp || inFilename.isEmpty())
        path += QLatin1Char('-') + timestamp(QDateTime::currentDateTime());
    return path + inExtension;
}

QString KyScriptOutputFile::timestamp(const QDateTime& inTime)
{
    const QString digits = inTime.toLocalTime().toString(QStringLiteral("yyyyMMddhhmmsszzz"));
    return QString::number(digits.toLongLong());
}

bool KyScriptOutputFile::makeDirectory(const QString& inDirectory)
{
    return !inDirectory.contains(QChar(0)) && (QDir(inDirectory).exists() || QDir().mkpath(inDirectory));
}

bool KyScriptOutputFile::open(QFile& ioFile)
{
    const QString name = ioFile.fileName();
    return !name.contains(QChar(0)) && !isPipe(name) && ioFile.open(QIODevice::WriteOnly);
}
