#pragma once

#include <QString>

#include <memory>

/// One value of an enumeration that can be a property, see OvEnum. A class per value derives from it.
class OvEnumValue
{
public:
    virtual ~OvEnumValue();

    /// The number, unique in its enumeration.
    virtual int value() const = 0;
    /// The text form, Latin-1 without white space, unique in its enumeration.
    virtual const char* key() const = 0;
    /// What the user reads.
    virtual QString label() const = 0;
    virtual std::unique_ptr<OvEnumValue> clone() const = 0;
};
