#include "OvEnum.h"

#include <rnlib/RnContract.h>

#include <algorithm>
#include <charconv>
#include <istream>
#include <map>
#include <ostream>

namespace {

struct Registration
{
    bool isPrepared = false;
    OvEnum::Values prepared;
    OvEnum::Values values;
};

// Reached while static objects are built.
Registration& registration(const std::string& inName)
{
    static std::map<std::string, Registration> sRegistrations;
    return sRegistrations[inName];
}

OvEnum::ValuePointer findKey(const OvEnum::Values& inValues, const std::string& inKey)
{
    const auto found =
        std::find_if(inValues.begin(), inValues.end(), [&](const auto& v) { return inKey == v->key(); });
    return found == inValues.end() ? nullptr : *found;
}

OvEnum::ValuePointer findNumber(const OvEnum::Values& inValues, int inNumber)
{
    const auto found =
        std::find_if(inValues.begin(), inValues.end(), [&](const auto& v) { return inNumber == v->value(); });
    return found == inValues.end() ? nullptr : *found;
}

/// The value that the word \a inWord means: a key, or else a number.
OvEnum::ValuePointer findWord(const OvEnum::Values& inValues, const std::string& inWord)
{
    if (OvEnum::ValuePointer found = findKey(inValues, inWord))
        return found;
    int number = 0;
    const char* end = inWord.data() + inWord.size();
    const auto [stop, error] = std::from_chars(inWord.data(), end, number);
    return error == std::errc() && stop == end ? findNumber(inValues, number) : nullptr;
}

} // namespace

void OvEnum::prepareRegistration(const std::string& inName)
{
    Registration& entry = registration(inName);
    entry.isPrepared = true;
    entry.prepared.clear();
}

void OvEnum::registerValue(const std::string& inName, std::unique_ptr<OvEnumValue> inValue)
{
    Values& prepared = registration(inName).prepared;
    if (!dbc_holds(inValue != nullptr))
        return;
    const bool isNew = !findKey(prepared, inValue->key()) && !findNumber(prepared, inValue->value());
    if (dbc_holds(isNew))
        prepared.push_back(std::move(inValue));
}

void OvEnum::registerEnum(const std::string& inName)
{
    Registration& entry = registration(inName);
    const bool isPrepared = std::exchange(entry.isPrepared, false);
    if (dbc_holds(isPrepared))
        entry.values = std::exchange(entry.prepared, {});
}

const OvEnum::Values& OvEnum::values(const std::string& inName)
{
    return registration(inName).values;
}

OvEnum::OvEnum(std::string inName)
    : mName(std::move(inName))
{
    const Values& all = values(mName);
    if (!all.empty())
        mValue = all.front();
}

OvEnum::OvEnum(std::string inName, const OvEnumValue& inValue)
    : mName(std::move(inName))
    , mValue(inValue.clone())
{}

OvEnum::OvEnum(const OvEnum&) = default;
OvEnum& OvEnum::operator=(const OvEnum&) = default;
OvEnum::~OvEnum() = default;

int OvEnum::value() const
{
    return mValue ? mValue->value() : -1;
}

std::string OvEnum::key() const
{
    return mValue ? mValue->key() : "";
}

QString OvEnum::label() const
{
    return mValue ? mValue->label() : QString();
}

bool OvEnum::setKey(const std::string& inKey)
{
    return take(findKey(values(mName), inKey));
}

bool OvEnum::setValue(int inValue)
{
    return take(findNumber(values(mName), inValue));
}

bool OvEnum::setWord(const std::string& inWord)
{
    return take(findWord(values(mName), inWord));
}

bool OvEnum::take(ValuePointer inValue)
{
    if (!inValue)
        return false;
    mValue = std::move(inValue);
    return true;
}

bool operator==(const OvEnum& inA, const OvEnum& inB)
{
    return inA.mName == inB.mName && inA.value() == inB.value();
}

std::ostream& operator<<(std::ostream& ioStream, const OvEnum& inEnum)
{
    return ioStream << inEnum.key();
}

std::istream& operator>>(std::istream& ioStream, OvEnum& ioEnum)
{
    std::string word;
    if (ioStream >> word && !ioEnum.setWord(word))
        ioStream.setstate(std::ios::failbit);
    return ioStream;
}
