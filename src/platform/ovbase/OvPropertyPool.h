#pragma once

#include "OvProperty.h"
#include "OvRegistry.h"
#include "OvRegistrySerializer.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The application's store of typed, named, persistent settings.
///
/// Somebody's object: the host makes one, behind the OvRegistry from which it reads, and instance() finds the
/// newest while it lives. It owns its properties; they stay until it ends. Modules register theirs in
/// callbacks, which every new pool runs again. GUI thread.
class OvPropertyPool
{
public:
    using RegisterFunction = std::function<void(OvPropertyPool&)>;
    using PropertyFunction = std::function<void(const OvVariant*)>;

    /// Runs all registered callbacks, in the order of their registration.
    OvPropertyPool();
    /// What waits for commit() is dropped.
    ~OvPropertyPool();
    OvPropertyPool(const OvPropertyPool&) = delete;
    OvPropertyPool& operator=(const OvPropertyPool&) = delete;

    /// Null when there is none.
    static OvPropertyPool* instance();

    /// Runs \a inFunction for the living pool at once, and for each later pool when that is made. May be
    /// called while static objects are built. Always there.
    static void addRegisterProperties(RegisterFunction inFunction);

    /// Sets who tells whether this process is the client of a server connection. An empty function, as at the
    /// start, stands for no connection. Always there; whoever sets it takes it back before it ends.
    static void setClientQuestion(std::function<bool()> inQuestion);

    /// Longer ids name no property.
    static constexpr int MaxIdLength = 1024;

    /// Whether \a inId may name a property: 1 to MaxIdLength printable Latin-1 characters, not all of them
    /// dots, none of them "?", which is what characters outside Latin-1 become and would make different ids
    /// one. Empty components are allowed.
    static bool validPropertyName(const std::string& inId);

    /// The property of this id; null when there is none.
    OvVariant* variant(std::string_view inId) const;

    /// The property of this id, made with the value \a inDefault if there is none yet; one that is there
    /// keeps its value and its serializer. Null when the id is not valid, and when a property of another
    /// type has it.
    ///
    /// Contract reports, after which the work goes on: a connection exists and this is not the client;
    /// "v->isType<t_type>()"; with auto-commit a serializer that is neither the default nor that of the
    /// property; "validPropertyName(id)".
    template <class T>
    OvProperty<T>* property(const std::string& inId, const T& inDefault, OvSerializer* inSerializer)
    {
        if (OvVariant* present = presentVariant(inId, typeid(T), inSerializer))
            return present->isType<T>() ? static_cast<OvProperty<T>*>(present) : nullptr;
        auto* made = new OvProperty<T>(inId, inDefault);
        return addVariant(made, inSerializer) ? made : nullptr;
    }

    /// The value of a property, or \a inFallback when there is none of this id and type. Logs nothing, and
    /// allocates nothing but the copy of the value.
    template <class T>
    T value(std::string_view inId, const T& inFallback) const
    {
        const OvVariant* present = find(inId);
        return present && present->isType<T>() ? static_cast<const OvProperty<T>*>(present)->value
                                               : inFallback;
    }

    /// Takes ownership of \a inVariant, whose value becomes its default, and reads its stored value;
    /// observers of additions hear of it. A null one, an invalid id ("validPropertyName(id)") and an id that
    /// is taken
    /// ("variant(id) == nullptr") are contract reports: the property is deleted and the result is false.
    bool addVariant(OvVariant* inVariant, OvSerializer* inSerializer);

    /// All properties, ordered by id.
    std::vector<OvVariant*> variants() const;

    /// The serializer that keeps properties in the registry. Never null; belongs to the pool.
    OvSerializer* defaultSerializer() { return &mDefaultSerializer; }

    /// The layer to which serialize() writes: OvRegistry::UserPriority at the start.
    OvRegistry::Priority defaultSerializationPriority() const { return mSerializationPriority; }
    void setDefaultSerializationPriority(OvRegistry::Priority inPriority)
    {
        mSerializationPriority = inPriority;
    }

    /// Whether each serialize() stores at once, as at the start, or waits for commit(). Turning it on
    /// commits.
    bool isAutoCommitEnabled() const { return mIsAutoCommitEnabled; }
    void setAutoCommitEnabled(bool inOn);
    /// Stores what waits, with the values and in the layers of the time of serialize(). False when something
    /// could not be stored; it waits on.
    bool commit();

    /// Calls \a inFunction for each property added later, as long as \a inContext lives.
    void observeAdditions(const QObject* inContext, PropertyFunction inFunction);
    /// Calls \a inFunction for each change that a property propagates to the pool, as long as \a inContext
    /// lives.
    void observeChanges(const QObject* inContext, PropertyFunction inFunction);

private:
    friend class OvVariant;

    struct IdHash
    {
        using is_transparent = void;
        std::size_t operator()(std::string_view inId) const { return std::hash<std::string_view>()(inId); }
    };
    using Variants = std::unordered_map<std::string, std::unique_ptr<OvVariant>, IdHash, std::equal_to<>>;

    void run(RegisterFunction inFunction);
    OvVariant* find(std::string_view inId) const;
    OvVariant* presentVariant(const std::string& inId, const std::type_info& inType,
                              const OvSerializer* inSerializer) const;
    bool store(OvVariant& ioVariant);
    void forgetPending(OvVariant& ioVariant);
    void tellChange(const OvVariant& inVariant);

    OvRegistrySerializer mDefaultSerializer;
    OvRegistry::Priority mSerializationPriority = OvRegistry::UserPriority;
    bool mIsAutoCommitEnabled = true;
    Variants mVariants;
    std::map<std::pair<OvVariant*, OvRegistry::Priority>, std::unique_ptr<OvVariant>> mPending;
    OvObservers<const OvVariant*> mAdditions;
    OvObservers<const OvVariant*> mChanges;
};
