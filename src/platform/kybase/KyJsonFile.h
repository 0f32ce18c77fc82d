#pragma once

#include <rnlib/RnResult.h>

#include <QDateTime>
#include <QJsonObject>
#include <QString>

#include <functional>
#include <optional>

/// A small JSON document in the profile, which several processes of one user may share.
///
/// Nothing is ever silently overwritten: a file that does not hold a JSON object is reported in the log
/// (level 3, context "Profile") and set aside as "NAME.damaged-", followed by the local time in 17 digits.
/// A file that can't be read or set aside is reported too and stays as it is.
class KyJsonFile
{
public:
    /// \a inPath need not exist; neither need its folder.
    explicit KyJsonFile(QString inPath);

    const QString& path() const { return mPath; }

    /// The document as it stands on disk. Empty without a file; nothing if the file can't be used.
    std::optional<QJsonObject> read();

    /// Whether the file on disk is another one than at the last read() or update(), by time and size.
    bool hasChanged() const;

    /// Reads the document, lets \a inChange work on it and, if that gives true, writes it in one piece. Other
    /// processes that update the file wait meanwhile.
    RnResult update(const std::function<bool(QJsonObject&)>& inChange);

private:
    struct Stamp
    {
        QDateTime time;
        qint64 size = -1;
        bool operator==(const Stamp&) const = default;
    };

    Stamp stampOnDisk() const;
    bool setAside(const QString& inReason) const;
    RnResult write(const QJsonObject& inDocument);

    const QString mPath;
    Stamp mStamp;
};
