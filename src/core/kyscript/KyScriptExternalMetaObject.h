#pragma once

#include "KyScriptExport.h"

#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <vector>

/// A class of another module that scripts construct with `new` in every engine.
///
/// A module derives from it, keeps one object alive and so offers a class with invokable constructors under a
/// global name. Engines with ScriptExternalMetaObjects pick it up at their next evaluation, unless the name
/// is taken. When the object goes, engines that have the name keep it, and it still constructs.
class KYSCRIPT_EXPORT KyScriptExternalMetaObject : public QObject
{
    Q_OBJECT

protected:
    /// \a inName becomes the object name. An empty name, one that is taken, and a null \a inMetaObject are
    /// contract reports; the entry is added all the same, and engines pass over one without a class.
    KyScriptExternalMetaObject(QObject* inParent, const QString& inName, const QMetaObject* inMetaObject);
    ~KyScriptExternalMetaObject() override;

private:
    friend class KyScriptEngine;

    /// In order of registration. A copy, which survives objects that go away.
    static std::vector<QPointer<KyScriptExternalMetaObject>> externalMetaObjects();

    const QString mName;
    const QMetaObject* const mMetaObject;
};
