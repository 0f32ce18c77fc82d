#pragma once

#include <QtCore/QString>

/// Where the QSettings of this process keep the user's settings while it lives, but on Windows, where they
/// are in the registry: scripts keep values there by Orvane.setRegistryValue.
class KySettingsFolder
{
public:
    /// Below \a inProfile. With an empty one they last as long as this object, and nothing is left behind.
    explicit KySettingsFolder(const QString& inProfile);
    ~KySettingsFolder();
    KySettingsFolder(const KySettingsFolder&) = delete;
    KySettingsFolder& operator=(const KySettingsFolder&) = delete;

private:
    const bool mIsTemporary;
    const QString mPath;
};
