#pragma once

#include <QList>
#include <QMap>
#include <QString>

struct QMetaObject;

/// An argument of an operation, with its type as the meta-object names it, such as "QString".
struct HostArgument
{
    QString name;
    QString type;
};

/// One way to call an operation. An operation with default arguments has several.
struct HostSignature
{
    QList<HostArgument> arguments;
    QString result;
};

/// What scripts find under one name of a host object.
struct HostMember
{
    enum Kind
    {
        Property,
        Method,
        Signal
    };

    Kind kind = Property;
    QString declaredBy; ///< The C++ class.

    // Of a property
    QString type;
    bool isWritable = false;

    // Of a method and a signal
    QList<HostSignature> signatures;
};

/// A class of host objects as scripts see it: what its meta-object and those of its bases tell.
struct HostClass
{
    QString name;
    QMap<QString, HostMember> members;
    QList<HostSignature> constructors;

    static HostClass of(const QMetaObject& inClass);
};
