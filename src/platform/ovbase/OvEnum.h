#pragma once

#include "OvEnumValue.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

/// Base of enumerations that can be properties: one of the values that are registered for a name.
///
/// A module derives a class that gives the name, registers the values once, when it is loaded, and can then
/// use OvProperty of its class:
///
///     class Side : public OvEnum
///     {
///     public:
///         Side() : OvEnum("Side") {}
///         explicit Side(const OvEnumValue& inValue) : OvEnum("Side", inValue) {}
///     };
///
///     OvEnum::prepareRegistration("Side");
///     OvEnum::registerValue("Side", std::make_unique<Left>());
///     OvEnum::registerValue("Side", std::make_unique<Right>());
///     OvEnum::registerEnum("Side");
///
/// The registered values are always there. An enumeration that is not registered has no values and reads no
/// text. GUI thread, and while static objects are built.
class OvEnum
{
public:
    using ValuePointer = std::shared_ptr<const OvEnumValue>;
    using Values = std::vector<ValuePointer>;

    /// Begins the list of values of \a inName anew. What is registered already stays in use till
    /// registerEnum().
    static void prepareRegistration(const std::string& inName);
    /// A null value, and a number or a key that the list has already, is a contract report and ignored.
    static void registerValue(const std::string& inName, std::unique_ptr<OvEnumValue> inValue);
    /// Puts the list to use. Without prepareRegistration() before, a contract report "isPrepared".
    static void registerEnum(const std::string& inName);
    /// The registered values in the order of their registration; empty when there are none.
    static const Values& values(const std::string& inName);

    virtual ~OvEnum();

    const std::string& name() const { return mName; }
    /// The number of the value; -1 with no value.
    int value() const;
    /// The key of the value; empty with no value.
    std::string key() const;
    /// The label of the value; empty with no value.
    QString label() const;

    /// Takes the value with this key, or number. False, with no change, when there is none.
    bool setKey(const std::string& inKey);
    bool setValue(int inValue);
    /// Takes the value with this key, or else with the number that the word is.
    bool setWord(const std::string& inWord);

    /// Same name and same number.
    friend bool operator==(const OvEnum& inA, const OvEnum& inB);

protected:
    /// The first registered value, or none when the name is not registered yet.
    explicit OvEnum(std::string inName);
    /// Any value, registered or not.
    OvEnum(std::string inName, const OvEnumValue& inValue);
    OvEnum(const OvEnum&);
    OvEnum& operator=(const OvEnum&);

private:
    bool take(ValuePointer inValue);

    std::string mName;
    ValuePointer mValue;
};

/// Writes the key.
std::ostream& operator<<(std::ostream& ioStream, const OvEnum& inEnum);
/// Reads one word, a key or a number that is registered. Anything else makes the stream fail and leaves the
/// value.
std::istream& operator>>(std::istream& ioStream, OvEnum& ioEnum);
