#include "KyScriptExternalMetaObject.h"

#include <rnlib/RnContract.h>

#include <algorithm>

namespace {

using MetaObjects = std::vector<QPointer<KyScriptExternalMetaObject>>;

/// Never deleted: objects of other modules may end while the process goes down.
MetaObjects& registry()
{
    static auto& sExternalMetaObjects = *new MetaObjects;
    return sExternalMetaObjects;
}

} // namespace

KyScriptExternalMetaObject::KyScriptExternalMetaObject(QObject* inParent, const QString& inName,
                                                       const QMetaObject* inMetaObject)
    : QObject(inParent)
    , mName(inName)
    , mMetaObject(inMetaObject)
{
    if (mName.isEmpty())
        dbc_report("!inName.isEmpty()", "Invalid name for external script meta object");
    const auto& objects = registry();
    const auto it = std::find_if(objects.begin(), objects.end(),
                                 [&](const auto& object) { return object && object->objectName() == mName; });
    if (it != objects.end()) {
        const auto message = QStringLiteral("Duplicate external script meta object name '%1'").arg(mName);
        dbc_report("it == objects.end()", message.toLatin1().constData());
    }
    if (!mMetaObject) {
        const auto message = QStringLiteral("No class for external script meta object '%1'").arg(mName);
        dbc_report("inMetaObject", message.toLatin1().constData());
    }
    setObjectName(mName);
    registry().push_back(this);
}

KyScriptExternalMetaObject::~KyScriptExternalMetaObject()
{
    auto& objects = registry();
    objects.erase(std::remove(objects.begin(), objects.end(), this), objects.end());
}

std::vector<QPointer<KyScriptExternalMetaObject>> KyScriptExternalMetaObject::externalMetaObjects()
{
    return registry();
}
