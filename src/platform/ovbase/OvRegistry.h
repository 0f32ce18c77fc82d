#pragma once

#include "OvRegistryStore.h"

#include <memory>
#include <vector>

/// The layered store of settings: for each id a value at any number of priorities, of which the highest is in
/// effect. Removing the value of one layer brings back what lies underneath.
///
/// Somebody's object: the host makes it with its store, in front of the property pool; getInstance() finds
/// the newest while it lives. Layers below SessionPriority are kept in the store, those from there on only in
/// this object. Changes that other processes make in the store are seen by the next call. GUI thread.
class OvRegistry
{
public:
    using Priority = int;
    using Value = OvRegistryValue;

    static constexpr Priority EffectivePriority = 0;  ///< Not a layer: the highest that has a value.
    static constexpr Priority UserPriority = 1000;    ///< What the user chose in the application's settings.
    static constexpr Priority ScriptPriority = 3000;  ///< What scripts wrote.
    static constexpr Priority SessionPriority = 4000; ///< From here on: for this process only, such as
                                                      ///< options of the command line.

    /// A null \a inStore stands for an empty memory store.
    explicit OvRegistry(std::shared_ptr<OvRegistryStore> inStore);
    ~OvRegistry();
    OvRegistry(const OvRegistry&) = delete;
    OvRegistry& operator=(const OvRegistry&) = delete;

    /// Null when there is none.
    static OvRegistry* getInstance();

    /// The value of \a inId in one layer, or the effective one. False, with \a outValue unchanged, when there
    /// is none.
    bool getProperty(const QString& inId, Value& outValue, Priority inPriority = EffectivePriority) const;

    /// Stores a value in one layer. False when the store can't be written; then nothing has changed. A
    /// priority below 1 is a contract report "inPriority > EffectivePriority" and false.
    bool setProperty(const QString& inId, const QString& inValue, Priority inPriority);

    /// Drops the value of one layer. Whether there was one that is gone now. A priority below 1 as above.
    bool removeProperty(const QString& inId, Priority inPriority);

    /// The layers in which \a inId has a value, ascending.
    std::vector<Priority> layers(const QString& inId) const;

private:
    OvRegistryStore& storeOf(Priority inPriority) const;

    const std::shared_ptr<OvRegistryStore> mStore;
    const std::unique_ptr<OvRegistryStore> mSession; ///< The layers from SessionPriority on.
};
