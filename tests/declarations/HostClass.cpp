#include "HostClass.h"

#include <QMetaMethod>
#include <QMetaObject>
#include <QMetaProperty>
#include <QRegularExpression>

namespace {

QString plain(const QByteArray& inType)
{
    return QString::fromLatin1(inType).remove(QRegularExpression("^const |&$"));
}

HostSignature signatureOf(const QMetaMethod& inMethod)
{
    HostSignature made;
    made.result = plain(inMethod.typeName());
    const auto names = inMethod.parameterNames();
    const auto types = inMethod.parameterTypes();
    for (qsizetype i = 0; i < names.size(); ++i)
        made.arguments.append({QString::fromLatin1(names.at(i)), plain(types.at(i))});
    return made;
}

/// What Qt keeps from scripts, although it is public.
bool isHidden(const QMetaMethod& inMethod)
{
    const bool isOfQObject = inMethod.enclosingMetaObject() == &QObject::staticMetaObject;
    return inMethod.access() == QMetaMethod::Private ||
           (isOfQObject && inMethod.name() != QByteArray("objectNameChanged"));
}

HostMember propertyOf(const QMetaProperty& inProperty)
{
    HostMember made;
    made.declaredBy = QString::fromLatin1(inProperty.enclosingMetaObject()->className());
    made.type = plain(inProperty.typeName());
    made.isWritable = inProperty.isWritable();
    return made;
}

/// Of the methods of a name, those of the class that is derived last count, and the properties before them.
void add(const QMetaMethod& inMethod, QMap<QString, HostMember>& ioMembers)
{
    HostMember& member = ioMembers[QString::fromLatin1(inMethod.name())];
    const QString owner = QString::fromLatin1(inMethod.enclosingMetaObject()->className());
    if (member.declaredBy != owner) {
        member = HostMember();
        member.declaredBy = owner;
        member.kind = inMethod.methodType() == QMetaMethod::Signal ? HostMember::Signal : HostMember::Method;
    }
    member.signatures.append(signatureOf(inMethod));
}

} // namespace

HostClass HostClass::of(const QMetaObject& inClass)
{
    HostClass made;
    made.name = QString::fromLatin1(inClass.className());
    for (int i = 0; i < inClass.propertyCount(); ++i)
        made.members.insert(QString::fromLatin1(inClass.property(i).name()), propertyOf(inClass.property(i)));
    for (int i = 0; i < inClass.methodCount(); ++i) {
        if (!isHidden(inClass.method(i)))
            add(inClass.method(i), made.members);
    }
    for (int i = 0; i < inClass.constructorCount(); ++i)
        made.constructors.append(signatureOf(inClass.constructor(i)));
    return made;
}
