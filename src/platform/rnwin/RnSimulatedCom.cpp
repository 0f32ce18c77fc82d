#include "RnSimulatedCom.h"

#include <algorithm>
#include <numeric>

namespace {

std::string plain(const std::u16string& inName)
{
    return {inName.begin(), inName.end()};
}

} // namespace

RnSimulatedCom::Object::Object(RnSimulatedCom& inCom, std::string inName)
    : mCom(inCom)
    , mName(std::move(inName))
{}

RnSimulatedCom::Object::Member& RnSimulatedCom::Object::member(const std::u16string& inName)
{
    const auto found = std::find_if(mMembers.begin(), mMembers.end(),
                                    [&](const Member& inMember) { return inMember.name == inName; });
    if (found != mMembers.end())
        return *found;
    mMembers.push_back({inName, false, nullptr, {}});
    return mMembers.back();
}

void RnSimulatedCom::Object::setProperty(const std::u16string& inName, Object* inValue)
{
    member(inName).isObject = true;
    member(inName).value = inValue;
}

void RnSimulatedCom::Object::setMember(const std::u16string& inName, Method inCall)
{
    member(inName).call = std::move(inCall);
}

void RnSimulatedCom::Object::release()
{
    mCom.call("Release " + mName);
    --mReferences;
}

RnComResult RnSimulatedCom::Object::queryDispatch(RnDispatch*& outDispatch)
{
    const RnComResult result = mCom.call("QueryInterface " + mName);
    outDispatch = result < 0 ? nullptr : this;
    if (outDispatch)
        addReference();
    return result;
}

RnComResult RnSimulatedCom::Object::idOfName(const std::u16string& inName, std::uint32_t inLocale,
                                             std::int32_t& outId)
{
    outId = -1;
    const RnComResult result = mCom.call("GetIDsOfNames " + mName + "." + plain(inName));
    if (result < 0)
        return result;
    for (std::size_t i = 0; i < mMembers.size() && inLocale == 0x400; ++i) {
        if (mMembers[i].name == inName)
            outId = std::int32_t(i + 1);
    }
    return outId < 0 ? UnknownName : Ok;
}

RnComResult RnSimulatedCom::Object::invoke(const RnInvocation& inCall, RnDispatch** outResult)
{
    if (outResult)
        *outResult = nullptr;
    const bool isKnown = inCall.id >= 1 && std::size_t(inCall.id) <= mMembers.size();
    const std::string name = isKnown ? plain(mMembers[std::size_t(inCall.id) - 1].name) : "?";
    const RnComResult result = mCom.call("Invoke " + std::to_string(inCall.flags) + " " + mName + "." + name);
    if (result < 0 || !isKnown)
        return result < 0 ? result : Fail;
    const Member member = mMembers[std::size_t(inCall.id) - 1];
    if (!member.isObject)
        return member.call ? member.call(inCall) : Fail;
    if (!outResult || inCall.flags != RnInvocation::PropertyGet)
        return Fail;
    *outResult = member.value;
    if (member.value)
        member.value->addReference();
    return Ok;
}

RnSimulatedCom::RnSimulatedCom() = default;
RnSimulatedCom::~RnSimulatedCom() = default;

RnSimulatedCom::Object& RnSimulatedCom::make(const std::string& inName)
{
    return *mObjects.emplace_back(std::make_unique<Object>(*this, inName));
}

void RnSimulatedCom::registerProgram(const std::u16string& inProgramId, Object* inObject)
{
    std::erase_if(mPrograms, [&](const Program& inProgram) { return inProgram.id == inProgramId; });
    mPrograms.push_back({inProgramId, inObject});
}

int RnSimulatedCom::references() const
{
    return std::accumulate(mObjects.begin(), mObjects.end(), 0,
                           [](int inSum, const auto& inObject) { return inSum + inObject->references(); });
}

RnComResult RnSimulatedCom::call(const std::string& inCall)
{
    mCalls.push_back(inCall);
    const auto found = mResults.find(inCall);
    return found == mResults.end() ? Ok : found->second;
}

RnComResult RnSimulatedCom::initialize()
{
    const RnComResult result = call("CoInitialize");
    if (result >= 0)
        ++mDepth;
    return result;
}

void RnSimulatedCom::uninitialize()
{
    call("CoUninitialize");
    --mDepth;
}

RnComResult RnSimulatedCom::classIdOf(const std::u16string& inProgramId, RnClassId& outId)
{
    const RnComResult result = call("CLSIDFromProgID " + plain(inProgramId));
    if (result < 0)
        return result;
    for (std::size_t i = 0; i < mPrograms.size(); ++i) {
        if (mPrograms[i].id == inProgramId) {
            outId = {};
            outId.bytes[0] = static_cast<unsigned char>(i + 1);
            return Ok;
        }
    }
    return UnknownClass;
}

RnUnknown* RnSimulatedCom::activeObject(const RnClassId& inId)
{
    const RnComResult result = call("GetActiveObject");
    const std::size_t place = inId.bytes[0];
    if (result < 0 || place < 1 || place > mPrograms.size() || !mPrograms[place - 1].object)
        return nullptr;
    mPrograms[place - 1].object->addReference();
    return mPrograms[place - 1].object;
}
