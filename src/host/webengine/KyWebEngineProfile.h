#pragma once

#include <QtCore/QLockFile>
#include <QtCore/QString>

#include <memory>

class QWebEngineProfile;

/// Cookies, storage and cache of the pages of one browser, in a folder of their own.
///
/// All views of a process that name the same folder share one. A folder that another process is using, and an
/// empty name, give a profile in memory: pages work, and nothing is kept. Its end must come before that of
/// the application, and after that of its pages.
class KyWebEngineProfile
{
public:
    static std::shared_ptr<KyWebEngineProfile> of(const QString& inFolder);

    ~KyWebEngineProfile();
    KyWebEngineProfile(const KyWebEngineProfile&) = delete;
    KyWebEngineProfile& operator=(const KyWebEngineProfile&) = delete;

    QWebEngineProfile& profile() const { return *mProfile; }

    /// The folder of this name below \a inRoot, whatever characters the name has; an absolute path as it is.
    static QString folder(const QString& inRoot, const QString& inName);

private:
    explicit KyWebEngineProfile(const QString& inFolder);
    void keepIn(const QString& inFolder);

    std::unique_ptr<QLockFile> mLock;
    std::unique_ptr<QWebEngineProfile> mProfile;
};
