#pragma once

#include <ovbase/OvSessionContextID.h>

#include <memory>
#include <typeindex>
#include <utility>
#include <vector>

class KySessionContext;

/// Base of what belongs to a session: its studies, its worklist, its reports.
///
/// A component class T offers `static std::unique_ptr<T> create(KySessionContext&)`, which may give null
/// when the session can't have one.
class KySessionComponent
{
public:
    KySessionComponent() = default;
    virtual ~KySessionComponent();
    KySessionComponent(const KySessionComponent&) = delete;
    KySessionComponent& operator=(const KySessionComponent&) = delete;
};

/// The session on the screen, as the owner of its components.
///
/// Somebody's object: construction makes it the current one, destruction ends that and deletes the
/// components, the youngest first. GUI thread only.
class KySessionContext
{
public:
    KySessionContext();
    ~KySessionContext();
    KySessionContext(const KySessionContext&) = delete;
    KySessionContext& operator=(const KySessionContext&) = delete;

    /// Empty when there is no session. Users take a copy for as long as they work with the session: in a
    /// client whose sessions are shared that keeps it alive. Here a session is its maker's, and a copy does
    /// not keep it.
    static std::shared_ptr<KySessionContext>& currentInstance();

    /// The id of the current session; the default one when there is none.
    static OvSessionContextID currentInstanceID();

    /// Names this session and no other of the process. Sessions are counted from 1.
    OvSessionContextID id() const { return mId; }

    /// The component of class \a T, which the context owns. With \a inCreate a missing one is made by
    /// T::create; null when it is missing and that is not wanted or gives none. After a null the next call
    /// tries again.
    template <class T>
    T* component(bool inCreate)
    {
        if (KySessionComponent* present = find(typeid(T)))
            return static_cast<T*>(present);
        return inCreate ? insert(T::create(*this)) : nullptr;
    }

private:
    KySessionComponent* find(std::type_index inType) const;
    void append(std::type_index inType, std::unique_ptr<KySessionComponent> inComponent);

    template <class T>
    T* insert(std::unique_ptr<T> inComponent)
    {
        T* const component = inComponent.get();
        if (component)
            append(typeid(T), std::move(inComponent));
        return component;
    }

    const OvSessionContextID mId;
    std::vector<std::pair<std::type_index, std::unique_ptr<KySessionComponent>>> mComponents;
};
