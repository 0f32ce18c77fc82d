#pragma once

#include <QHash>
#include <QString>

#include <map>
#include <optional>

/// A stored value of one layer.
struct OvRegistryValue
{
    QString value;  ///< The text form of the value.
    QString source; ///< Name of the application that wrote it; for people.

    friend bool operator==(const OvRegistryValue&, const OvRegistryValue&) = default;
};

/// Where the registry's layers are kept: a file (OvRegistryFileStore) or memory (OvRegistryMemoryStore).
///
/// Shared by whoever made it and the registry. GUI thread.
class OvRegistryStore
{
public:
    using Layers = std::map<int, OvRegistryValue>; ///< By priority.
    using Content = QHash<QString, Layers>;        ///< By id; no id has an empty record.

    /// One value to be stored, or, without a value, to be removed.
    struct Change
    {
        QString id;
        int priority = 0;
        std::optional<OvRegistryValue> value;
    };

    virtual ~OvRegistryStore();

    /// All that is stored now, by this process and by others. Valid until the next call of an operation.
    virtual const Content& content() = 0;

    /// Makes one change to what is stored now. When it returns true, the change outlives the end of the
    /// process; with false nothing has changed, and the reason stands in the log.
    virtual bool apply(const Change& inChange) = 0;

    /// Puts \a inChange into \a ioContent.
    static void merge(const Change& inChange, Content& ioContent);
};
