#pragma once

#include "KyScriptExport.h"

#include <QtCore/QObject>

#include <functional>

class QJSEngine;

/// An object of another module that scripts reach as a global of every engine.
///
/// A module registers a live object or a factory under a global name, usually while it is loaded. Engines
/// pick the name up at their next evaluation and keep it. Two kinds, ScriptExternalKindA and
/// ScriptExternalKindB of KyScriptOption, keep names apart for engines that ask for one of them only; what
/// they stand for is decided by those who register and those who build engines.
///
/// The registering module owns its object. Scripts and garbage collections never delete it. GUI thread only.
class KYSCRIPT_EXPORT KyScriptExternalObject : public QObject
{
    Q_OBJECT

public:
    /// Registers this object. With an empty \a inName it is not registered, and may be later.
    KyScriptExternalObject(QObject* inParent, const QString& inName, int inKind);
    ~KyScriptExternalObject() override;

    /// Called at the end of each run with cleanup: subclasses drop what the run has left behind.
    virtual void clear();

    /// Offers \a inObject under \a inName and makes that its object name. An empty name, and a name that is
    /// taken in either kind, are contract reports; the row is added all the same, and each engine uses the
    /// first row of a name.
    static void registerExternalInstance(QObject* inObject, const QString& inName, int inKind);

    /// Offers what \a inCreator makes: each engine calls it once, at its next evaluation, and has an object
    /// of its own. The script side owns an object without a parent. Names as with an instance.
    static void registerExternalCreator(std::function<QObject*()> inCreator, const QString& inName,
                                        int inKind);

    /// Takes the rows of \a inObject out, one of each kind. Engines that have the name keep it.
    static void unregisterExternalInstance(QObject* inObject);

    /// Sets the globals of \a inKind that \a inEngine does not have yet, or has as null or undefined.
    static void addToEngine(QJSEngine& inEngine, int inKind);

    /// Calls clear() on every external object of \a inKind that \a inEngine can see.
    static void clearObjects(QJSEngine& inEngine, int inKind);
};
