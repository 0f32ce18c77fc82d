#pragma once

#include "OvObservers.h"

#include <QString>

#include <functional>
#include <memory>
#include <string>
#include <typeinfo>

class OvEnum;
class OvPropertyPool;
class OvSerializer;

/// Base of all application properties: a named value with a text form.
///
/// The value itself stands in the derived class, see OvProperty. A property is made by a module and handed
/// to the pool, which owns it to its end. The id is Latin-1 and never changes.
///
/// Two text forms exist: toString() is Latin-1, or UTF-8 when isStringType() is true; toQString() is what
/// people and scripts see and what is stored. Nothing here throws. GUI thread.
class OvVariant
{
public:
    using ChangedFunction = std::function<void(const OvVariant*)>;

    explicit OvVariant(std::string inIdentifier);
    virtual ~OvVariant();
    OvVariant& operator=(const OvVariant&) = delete;

    /// Type of the value, such as typeid(int). Only OvProperty<T> may give typeid(T): callers cast by it.
    virtual const std::type_info& type() const = 0;
    /// The value as an enumeration, by which a choice of its values can be offered; null for other types.
    virtual const OvEnum* enumeration() const;
    /// Whether the value is text in any characters, so that toString() is UTF-8.
    virtual bool isStringType() const;
    virtual std::string toString() const = 0;
    /// toString() read as Latin-1, unless the type says otherwise.
    virtual QString toQString() const;
    /// Whether \a inOther has the same type and the same value; ids don't count.
    virtual bool isEqual(const OvVariant& inOther) const = 0;
    /// A copy of id and value, which belongs to no pool and has no serializer and no observers.
    virtual std::unique_ptr<OvVariant> clone() const = 0;
    /// Takes the value of \a inOther, and nothing else of it. False, with no change, when the types differ.
    virtual bool assign(const OvVariant& inOther) = 0;
    /// Reads the value from its text. False when that can't be; what the value is then, the type tells.
    /// A null text is never read.
    virtual bool fromString(const char* inText) = 0;
    /// fromString() of the text in Latin-1, unless the type says otherwise.
    virtual bool fromQString(const QString& inText);

    template <class T>
    bool isType() const
    {
        return type() == typeid(T);
    }

    const std::string& identifier() const { return mIdentifier; }
    /// What the value comes from and goes to; null for a property that is not kept.
    OvSerializer* serializer() const { return mSerializer; }

    /// Takes the value that \a inText stands for. When that differs from the present one, the property is
    /// stored and its observers hear of it. False, with no change, when the text can't be read.
    bool setValueFromQString(const QString& inText);

    /// Stores the value in the pool's default layer, or notes it for OvPropertyPool::commit() when the pool's
    /// auto-commit is off. False when it is not kept: no serializer, no pool, or a store that can't be
    /// written, which then stands in the log.
    bool serialize();

    /// Takes the stored value of the highest layer that has one, or else the value with which the property
    /// was registered; observers hear of a change. A stored text that can't be read counts as none and is
    /// logged. Whether a stored value was taken. Without a serializer nothing happens.
    bool deserialize();

    /// Tells the observers of this property that the value has changed, and with \a inAlsoPool those of the
    /// pool too.
    void propagate(bool inAlsoPool);

    /// Calls \a inFunction after each change of the value, as long as \a inContext lives (a null one: as long
    /// as the property), and with \a inCallNow also at once, with the present value.
    void connectPropertyChangedSignal(const QObject* inContext, ChangedFunction inFunction, bool inCallNow);

    /// Drops the functions connected with this context.
    void disconnectPropertyChangedSignal(const QObject* inContext);

protected:
    /// For clone(): id only.
    OvVariant(const OvVariant& inOther);

private:
    friend class OvPropertyPool;

    struct Restored
    {
        bool isStored = false;
        bool hasChanged = false;
    };

    /// deserialize() without telling anybody; needs a serializer.
    Restored restore();

    const std::string mIdentifier;
    OvPropertyPool* mPool = nullptr;
    OvSerializer* mSerializer = nullptr;
    std::unique_ptr<OvVariant> mDefault; ///< The value at registration; null outside a pool.
    OvObservers<const OvVariant*> mObservers;
};
