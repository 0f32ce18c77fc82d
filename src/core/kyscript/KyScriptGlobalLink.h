#pragma once

#include <QtCore/QPointer>
#include <QtCore/QSet>
#include <QtCore/QVariantMap>
#include <QtQml/QJSValue>

#include <vector>

class KyScriptGlobal;
class QJSEngine;

/// A host object that a script keeps in `Global`. Weak: what has been deleted is left out at the next load.
struct KyScriptHostObject
{
    QPointer<QObject> object;

    friend bool operator==(const KyScriptHostObject& inA, const KyScriptHostObject& inB)
    {
        return inA.object == inB.object;
    }
};
Q_DECLARE_METATYPE(KyScriptHostObject)

/// Brings the store `Global` into the script world of one engine and back.
///
/// The cost of a run follows what it changes, not what the store holds: the link keeps a script object with
/// the store's plain values, copies it for a run, and afterwards reads only what differs from it.
///
/// Values go through QVariant. What has no such form (functions, symbols, classes) does not survive. Nothing
/// that a script puts into `Global`, or does to the prototypes and functions of the language, harms the host
/// or the store: a getter that throws leaves its key as it was, cycles are cut to an empty object, and a
/// value beyond the limits of depth and size is not kept, with a log line of level 2. A host object is kept
/// weakly and comes back on the engine that knows it.
///
/// Owned by the engine that it serves, and made with it, before any script.
class KyScriptGlobalLink
{
public:
    explicit KyScriptGlobalLink(QJSEngine& inEngine);
    ~KyScriptGlobalLink();

    /// Sets a fresh object with the store's values as `Global` of the engine's global object.
    void load(QJSValue& ioGlobalObject);

    /// Takes the values of `Global` into the store. Nothing happens when a script has replaced it by
    /// something that is no plain object. Keys that are missing stay in the store; keys that are undefined
    /// leave it.
    void save(const QJSValue& inGlobalObject);

private:
    struct Walk;

    void makeScriptSide();
    void synchronise();
    QVariantMap plainValues() const;
    void keep(const QString& inKey, const QJSValue& inValue);
    QVariant stored(const QJSValue& inValue, Walk& ioWalk) const;
    QVariant storedList(const QJSValue& inArray, Walk& ioWalk) const;
    QVariant storedObject(const QJSValue& inObject, Walk& ioWalk) const;
    QJSValue script(const QVariant& inValue) const;
    QJSValue script(const KyScriptHostObject& inHostObject) const;

    QJSEngine& mEngine;
    KyScriptGlobal& mStore;

    const QJSValueList mBuiltins; ///< As they were before any script could replace them.
    QJSValue mCopy;               ///< Script function: a copy of an object.
    QJSValue mEntries; ///< Script function: names and values of an object that differ from a base, in turn.
    QJSValue mPublish; ///< Script function: sets an own property.
    QJSValue mHole;    ///< Stands in the base for a value that is no plain one, and equals nothing.

    QJSValue mBase; ///< No prototype. The store's plain values, holes for the others.
    QSet<QString> mHoles;
    quint64 mRevision = 0; ///< Of the store when mBase was brought up to it; 0 when it is to be made anew.
};
