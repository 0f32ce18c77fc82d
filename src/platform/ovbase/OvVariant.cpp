#include "OvVariant.h"

#include "OvPropertyPool.h"
#include "OvSerializer.h"

OvVariant::OvVariant(std::string inIdentifier)
    : mIdentifier(std::move(inIdentifier))
{}

OvVariant::OvVariant(const OvVariant& inOther)
    : mIdentifier(inOther.mIdentifier)
{}

OvVariant::~OvVariant() = default;

const OvEnum* OvVariant::enumeration() const
{
    return nullptr;
}

bool OvVariant::isStringType() const
{
    return false;
}

QString OvVariant::toQString() const
{
    const std::string text = toString();
    return QString::fromLatin1(text.data(), qsizetype(text.size()));
}

bool OvVariant::fromQString(const QString& inText)
{
    return fromString(inText.toLatin1().constData());
}

bool OvVariant::setValueFromQString(const QString& inText)
{
    const std::unique_ptr<OvVariant> wanted = clone();
    if (!wanted->fromQString(inText))
        return false;
    if (isEqual(*wanted))
        return true;
    assign(*wanted);
    serialize();
    propagate(true);
    return true;
}

bool OvVariant::serialize()
{
    try {
        return mPool && mSerializer && mPool->store(*this);
    } catch (...) {
        ovLogException("OvPropertyPool", "storing a property");
        return false;
    }
}

bool OvVariant::deserialize()
{
    if (!mPool || !mSerializer)
        return false;
    mPool->forgetPending(*this);
    const Restored restored = restore();
    if (restored.hasChanged)
        propagate(true);
    return restored.isStored;
}

OvVariant::Restored OvVariant::restore()
{
    Restored restored;
    const std::unique_ptr<OvVariant> stored = clone();
    try {
        restored.isStored = mSerializer->read(*stored);
    } catch (...) {
        ovLogException("OvPropertyPool", "reading a stored property");
    }
    const OvVariant& wanted = restored.isStored ? *stored : *mDefault;
    restored.hasChanged = !isEqual(wanted) && assign(wanted);
    return restored;
}

void OvVariant::propagate(bool inAlsoPool)
{
    OvPropertyPool* pool = inAlsoPool ? mPool : nullptr;
    mObservers.tell(this);
    // An observer may have ended the pool, and this property with it.
    if (pool && pool == OvPropertyPool::instance())
        pool->tellChange(*this);
}

void OvVariant::connectPropertyChangedSignal(const QObject* inContext, ChangedFunction inFunction,
                                             bool inCallNow)
{
    mObservers.add(inContext, inFunction);
    if (!inCallNow || !inFunction)
        return;
    OvObservers<const OvVariant*> now;
    now.add(inContext, std::move(inFunction));
    now.tell(this);
}

void OvVariant::disconnectPropertyChangedSignal(const QObject* inContext)
{
    mObservers.remove(inContext);
}
