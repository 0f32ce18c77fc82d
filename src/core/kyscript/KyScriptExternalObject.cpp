#include "KyScriptExternalObject.h"

#include <rnlib/RnContract.h>

#include <QtCore/QPointer>
#include <QtQml/QJSEngine>

#include <algorithm>
#include <map>
#include <vector>

namespace {

struct ExternalEntry
{
    QString name;
    QPointer<QObject> instance;
    std::function<QObject*()> creator;
};

using Entries = std::vector<ExternalEntry>;

/// Never deleted: objects of other modules may end while the process goes down.
std::map<int, Entries>& externalObjects()
{
    static auto& sExternalObjects = *new std::map<int, Entries>;
    return sExternalObjects;
}

void checkName(const QString& inName)
{
    if (inName.isEmpty())
        dbc_report("!inName.isEmpty()", "Invalid name for external script object");
    const auto message = QStringLiteral("Duplicate external script object name '%1'").arg(inName).toLatin1();
    for (const auto& [kind, objects] : externalObjects()) {
        const auto it = std::find_if(objects.begin(), objects.end(),
                                     [&](const ExternalEntry& entry) { return entry.name == inName; });
        if (it != objects.end())
            dbc_report("it == objects.end()", message.constData());
    }
}

/// A copy, since a factory may register further rows; empty for a kind without a row.
Entries rowsOf(int inKind)
{
    const auto it = externalObjects().find(inKind);
    return it == externalObjects().end() ? Entries() : it->second;
}

} // namespace

KyScriptExternalObject::KyScriptExternalObject(QObject* inParent, const QString& inName, int inKind)
    : QObject(inParent)
{
    if (!inName.isEmpty())
        registerExternalInstance(this, inName, inKind);
}

KyScriptExternalObject::~KyScriptExternalObject()
{
    unregisterExternalInstance(this);
}

void KyScriptExternalObject::clear() {}

void KyScriptExternalObject::registerExternalInstance(QObject* inObject, const QString& inName, int inKind)
{
    checkName(inName);
    if (inObject)
        inObject->setObjectName(inName);
    externalObjects()[inKind].push_back({inName, inObject, nullptr});
}

void KyScriptExternalObject::registerExternalCreator(std::function<QObject*()> inCreator,
                                                     const QString& inName, int inKind)
{
    checkName(inName);
    externalObjects()[inKind].push_back({inName, nullptr, std::move(inCreator)});
}

void KyScriptExternalObject::unregisterExternalInstance(QObject* inObject)
{
    if (!inObject)
        return; // a factory's row has no instance either
    for (auto& [kind, objects] : externalObjects()) {
        const auto it = std::find_if(objects.begin(), objects.end(),
                                     [&](const ExternalEntry& entry) { return entry.instance == inObject; });
        if (it != objects.end())
            objects.erase(it);
    }
}

void KyScriptExternalObject::addToEngine(QJSEngine& inEngine, int inKind)
{
    QJSValue global = inEngine.globalObject();
    for (const ExternalEntry& entry : rowsOf(inKind)) {
        const QJSValue present = global.property(entry.name);
        if (!present.isNull() && !present.isUndefined())
            continue;
        if (entry.instance) {
            QJSEngine::setObjectOwnership(entry.instance, QJSEngine::CppOwnership);
            global.setProperty(entry.name, inEngine.newQObject(entry.instance));
        } else if (entry.creator) {
            global.setProperty(entry.name, inEngine.newQObject(entry.creator()));
        }
    }
}

void KyScriptExternalObject::clearObjects(QJSEngine& inEngine, int inKind)
{
    const QPointer<QJSEngine> engine(&inEngine);
    for (const ExternalEntry& entry : rowsOf(inKind)) {
        if (!engine)
            return; // an object has ended it
        QObject* object = entry.instance;
        if (!object)
            object = inEngine.globalObject().property(entry.name).toQObject();
        if (auto* external = qobject_cast<KyScriptExternalObject*>(object))
            external->clear();
    }
}
