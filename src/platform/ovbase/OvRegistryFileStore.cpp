#include "OvRegistryFileStore.h"

#include "OvFileLock.h"

#include <rnlib/RnLogFile.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace {

constexpr const char* LogContext = "OvRegistry";

// A file is written anew when it has this many lines more than twice those that it needs.
constexpr int SpareLines = 1000;

constexpr QFileDevice::Permissions OwnerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

QString lockPath(const QString& inPath)
{
    return inPath + QLatin1String(".lock");
}

/// A name for the damaged file \a inPath that is not taken.
QString asidePath(const QString& inPath)
{
    const QString time = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddhhmmsszzz"));
    const QString path = inPath + QLatin1String(".damaged-") + time;
    QString free = path;
    for (int i = 2; QFileInfo::exists(free); ++i)
        free = path + QLatin1Char('-') + QString::number(i);
    return free;
}

std::optional<QByteArray> readAll(const QString& inPath, QString& outReason)
{
    QFile file(inPath);
    if (!file.open(QIODevice::ReadOnly)) {
        outReason = file.errorString();
        return std::nullopt;
    }
    const QByteArray text = file.readAll();
    outReason = file.errorString();
    return file.error() == QFileDevice::NoError ? std::optional(text) : std::nullopt;
}

/// Goes on after a write that ran out of room half-way: only the next one tells the reason.
bool writeAll(const QByteArray& inText, QFileDevice& ioFile)
{
    qint64 done = 0;
    while (done < inText.size()) {
        const qint64 count = ioFile.write(inText.constData() + done, inText.size() - done);
        if (count <= 0)
            return false;
        done += count;
    }
    return true;
}

/// Writes a file that must not exist yet. False, with nothing left behind, when it can't be written whole.
bool writeNew(const QString& inPath, const QByteArray& inText, QString& outReason)
{
    QFile file(inPath);
    const bool isOpen = file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered);
    if (isOpen)
        file.setPermissions(OwnerOnly);
    if (isOpen && writeAll(inText, file))
        return true;
    outReason = file.errorString();
    if (isOpen)
        file.remove();
    return false;
}

int valueCount(const OvRegistryStore::Content& inContent)
{
    std::size_t count = 0;
    for (const OvRegistryStore::Layers& layers : inContent)
        count += layers.size();
    return int(count);
}

QByteArray firstLine(const QByteArray& inText)
{
    return inText.left(inText.indexOf('\n') + 1);
}

void log(const QString& inPath, const QString& inText)
{
    getTheLogInstance().tracef(3, LogContext, "settings file \"%s\": %s", inPath.toUtf8().constData(),
                               inText.toUtf8().constData());
}

} // namespace

OvRegistryFileStore::OvRegistryFileStore(const QString& inPath, std::chrono::milliseconds inLockTimeout)
    : mPath(QFileInfo(inPath).absoluteFilePath())
    , mLockTimeout(inLockTimeout)
{}

OvRegistryFileStore::Stamp OvRegistryFileStore::stampOnDisk() const
{
    const QFileInfo file(mPath);
    return file.exists() ? Stamp{true, file.size(), file.lastModified()} : Stamp();
}

bool OvRegistryFileStore::isCurrent() const
{
    if (mIsDamaged || stampOnDisk() != mStamp)
        return false;
    if (!mStamp.exists)
        return true;
    // Another writing of the file can have the size of this one, within the resolution of the time.
    QFile file(mPath);
    return file.open(QIODevice::ReadOnly) && file.readLine() == mHeader;
}

bool OvRegistryFileStore::canAppend() const
{
    return mStamp.exists && mEndsWithBreak && mLines <= 2 * mLinesNeeded + SpareLines;
}

const OvRegistryStore::Content& OvRegistryFileStore::content()
{
    if (stampOnDisk() == mStamp || load())
        return mContent;
    // Without the lock this can be a line that another process is just writing.
    const OvFileLock lock(lockPath(mPath), mLockTimeout);
    if (!load())
        repair(lock.errorText());
    return mContent;
}

bool OvRegistryFileStore::apply(const Change& inChange)
{
    if (!QDir().mkpath(QFileInfo(mPath).path()))
        return fail(QStringLiteral("its folder can't be made"));
    const OvFileLock lock(lockPath(mPath), mLockTimeout);
    if (!lock.isHeld())
        return fail(lock.errorText());
    if (!isCurrent() && !load() && !repair(QString()))
        return false;
    if (!(canAppend() ? append(inChange) : rewrite(&inChange)))
        return false;
    merge(inChange, mContent);
    mFailure.clear();
    return true;
}

bool OvRegistryFileStore::load()
{
    const Stamp stamp = stampOnDisk();
    OvRegistryJournal::Reading reading;
    QByteArray header;
    if (stamp.exists) {
        QString reason;
        const QByteArray text = readAll(mPath, reason).value_or(QByteArray());
        reading = OvRegistryJournal::read(text, Content());
        if (reading.state != OvRegistryJournal::State::Sound)
            return false;
        header = firstLine(text);
    }
    mContent = reading.content;
    mLines = reading.lines;
    mLinesNeeded = valueCount(mContent);
    mEndsWithBreak = reading.endsWithBreak;
    mHeader = header;
    mStamp = stamp;
    mIsDamaged = false;
    return true;
}

bool OvRegistryFileStore::repair(const QString& inObstacle)
{
    QString readFailure;
    const std::optional<QByteArray> text = readAll(mPath, readFailure);
    const auto reading = OvRegistryJournal::read(text.value_or(QByteArray()), mContent);
    const bool isJournal = reading.state != OvRegistryJournal::State::Foreign;
    QString reason = QStringLiteral("can't be read (%1)").arg(readFailure);
    if (isJournal)
        reason = QStringLiteral("damaged, unreadable lines: %1").arg(reading.badLines);
    else if (text)
        reason = QStringLiteral("damaged, its first line is not that of a settings file");
    if (isJournal)
        mContent = reading.content;
    if (!inObstacle.isEmpty())
        return giveUp(reason, inObstacle);
    return isJournal ? recover(reason, *text) : setAside(reason);
}

bool OvRegistryFileStore::setAside(const QString& inReason)
{
    const QString aside = asidePath(mPath);
    QFile file(mPath);
    if (!file.rename(aside))
        return giveUp(inReason, file.errorString());
    log(mPath, QStringLiteral("%1; set aside as \"%2\"").arg(inReason, aside));
    mStamp = Stamp();
    mIsDamaged = false;
    return mContent.isEmpty() || rewrite(nullptr);
}

bool OvRegistryFileStore::recover(const QString& inReason, const QByteArray& inText)
{
    const QString aside = asidePath(mPath);
    QString obstacle;
    if (!writeNew(aside, inText, obstacle))
        return giveUp(inReason, obstacle);
    if (!rewrite(nullptr)) {
        QFile::remove(aside);
        mIsDamaged = true;
        mStamp = stampOnDisk();
        return false;
    }
    log(mPath, QStringLiteral("%1; a copy as it was is \"%2\", %3 values were kept")
                   .arg(inReason, aside)
                   .arg(mLines));
    return true;
}

bool OvRegistryFileStore::append(const Change& inChange)
{
    const QByteArray line = OvRegistryJournal::line(inChange);
    QFile file(mPath);
    if (!file.open(QIODevice::Append | QIODevice::ExistingOnly | QIODevice::Unbuffered))
        return fail(QStringLiteral("can't be written (%1)").arg(file.errorString()));
    if (!writeAll(line, file)) {
        const QString reason = file.errorString();
        file.resize(mStamp.size);
        return fail(QStringLiteral("can't be written (%1)").arg(reason));
    }
    file.close();
    ++mLines;
    mStamp = stampOnDisk();
    return true;
}

bool OvRegistryFileStore::rewrite(const Change* inChange)
{
    Content content = mContent;
    if (inChange)
        merge(*inChange, content);
    const QByteArray header = OvRegistryJournal::newHeader();
    const QByteArray text = OvRegistryJournal::text(header, content);
    QSaveFile file(mPath);
    // Unbuffered: commit() does not tell when a buffer could only be written in part.
    const bool isOpen = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    if (isOpen && !mStamp.exists)
        file.setPermissions(OwnerOnly);
    if (!isOpen || !writeAll(text, file) || !file.commit())
        return fail(QStringLiteral("can't be written (%1)").arg(file.errorString()));
    mHeader = header;
    mLines = mLinesNeeded = int(text.count('\n')) - 1;
    mEndsWithBreak = true;
    mIsDamaged = false;
    mStamp = stampOnDisk();
    return true;
}

bool OvRegistryFileStore::giveUp(const QString& inReason, const QString& inObstacle)
{
    mIsDamaged = true;
    mStamp = stampOnDisk();
    return fail(
        QStringLiteral("%1, and can't be set aside (%2); nothing is stored").arg(inReason, inObstacle));
}

bool OvRegistryFileStore::fail(const QString& inReason)
{
    if (inReason != mFailure)
        log(mPath, inReason);
    mFailure = inReason;
    return false;
}
