#pragma once

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

/// A folder of a test with a settings file in it.
class SettingsFolder
{
public:
    QString path() const { return mDir.path(); }
    QString file() const { return mDir.filePath(QStringLiteral("settings.jsonl")); }

    QByteArray text() const { return textOf(file()); }
    static QByteArray textOf(const QString& inPath)
    {
        QFile read(inPath);
        return read.open(QIODevice::ReadOnly) ? read.readAll() : QByteArray("(unreadable)");
    }

    /// Writes the file behind the back of all that use it.
    bool setText(const QByteArray& inText) const
    {
        QFile written(file());
        return written.open(QIODevice::WriteOnly) && written.write(inText) == inText.size();
    }

    /// The files that were set aside, the oldest first.
    QStringList asides() const
    {
        QStringList paths;
        for (const QString& name : QDir(path()).entryList({QStringLiteral("*.damaged-*")}))
            paths.append(mDir.filePath(name));
        return paths;
    }

    /// The names of all files in the folder.
    QStringList names() const
    {
        return QDir(path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    }

private:
    QTemporaryDir mDir;
};
