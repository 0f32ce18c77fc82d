#include "KyWebEngineProfile.h"

#include <QtCore/QDir>
#include <QtCore/QUrl>
#include <QtGui/QOpenGLContext>
#include <QtQuick/QQuickWindow>
#include <QtWebEngineCore/QWebEngineProfile>
#include <QtWebEngineCore/QWebEngineSettings>

#include <map>

namespace {

/// Where OpenGL can't be used, the engine has to be told to draw without it, or it ends the process.
void prepareDrawing()
{
    const QOpenGLContext* shared = QOpenGLContext::globalShareContext();
    if (!shared || !shared->isValid())
        QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
}

/// The lock of \a inFolder; null when it cannot be had.
std::unique_ptr<QLockFile> locked(const QString& inFolder)
{
    if (inFolder.isEmpty() || !QDir().mkpath(inFolder))
        return nullptr;
    auto lock = std::make_unique<QLockFile>(QDir(inFolder).filePath(QStringLiteral("in-use")));
    lock->setStaleLockTime(0);
    return lock->tryLock(0) ? std::move(lock) : nullptr;
}

} // namespace

std::shared_ptr<KyWebEngineProfile> KyWebEngineProfile::of(const QString& inFolder)
{
    static std::map<QString, std::weak_ptr<KyWebEngineProfile>> sProfiles;
    std::weak_ptr<KyWebEngineProfile>& present = sProfiles[inFolder];
    std::shared_ptr<KyWebEngineProfile> profile = present.lock();
    if (!profile) {
        prepareDrawing();
        profile.reset(new KyWebEngineProfile(inFolder));
        present = profile;
    }
    return profile;
}

KyWebEngineProfile::KyWebEngineProfile(const QString& inFolder)
    : mLock(locked(inFolder))
{
    if (mLock)
        keepIn(inFolder);
    else
        mProfile = std::make_unique<QWebEngineProfile>();
    // Scripts of a page in a file reach a WebSocket of this machine.
    mProfile->settings()->setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, true);
}

KyWebEngineProfile::~KyWebEngineProfile() = default;

void KyWebEngineProfile::keepIn(const QString& inFolder)
{
    mProfile = std::make_unique<QWebEngineProfile>(QDir(inFolder).dirName());
    mProfile->setPersistentStoragePath(inFolder);
    mProfile->setCachePath(QDir(inFolder).filePath(QStringLiteral("cache")));
    mProfile->setPersistentCookiesPolicy(QWebEngineProfile::AllowPersistentCookies);
}

QString KyWebEngineProfile::folder(const QString& inRoot, const QString& inName)
{
    if (QDir::isAbsolutePath(inName))
        return QDir::cleanPath(inName);
    const QString name = QString::fromLatin1(QUrl::toPercentEncoding(inName, " "));
    return inRoot.isEmpty() || name.isEmpty() ? QString() : QDir(inRoot).filePath(name);
}
