#pragma once

#include "RnCom.h"

#include <functional>
#include <map>
#include <vector>

/// COM in memory: programs that are running, each a tree of objects with properties and methods.
///
/// Every call and every end of a reference is written down in the order in which it comes, and each call can
/// be made to fail. References are counted, and what is left of them can be asked.
class RnSimulatedCom final : public RnCom
{
public:
    static constexpr RnComResult Ok = 0;
    static constexpr RnComResult Fail = RnComResult(0x80004005);        ///< E_FAIL
    static constexpr RnComResult UnknownName = RnComResult(0x80020006); ///< DISP_E_UNKNOWNNAME
    static constexpr RnComResult UnknownClass = RnComResult(0x800401F3);

    /// An object of the tree. Belongs to the RnSimulatedCom that made it, and stays there when all references
    /// to it have ended.
    class Object final : public RnUnknown, public RnDispatch
    {
    public:
        using Method = std::function<RnComResult(const RnInvocation&)>;

        Object(RnSimulatedCom& inCom, std::string inName);

        /// A property that gives another object; null gives an empty answer.
        void setProperty(const std::u16string& inName, Object* inValue);
        /// A property that takes a text, and a method: what is to happen at a call.
        void setMember(const std::u16string& inName, Method inCall);

        int references() const { return mReferences; }
        void addReference() { ++mReferences; }

        void release() override;
        RnComResult queryDispatch(RnDispatch*& outDispatch) override;
        RnComResult idOfName(const std::u16string& inName, std::uint32_t inLocale,
                             std::int32_t& outId) override;
        RnComResult invoke(const RnInvocation& inCall, RnDispatch** outResult) override;

    private:
        struct Member
        {
            std::u16string name;
            bool isObject = false;
            Object* value = nullptr;
            Method call;
        };
        Member& member(const std::u16string& inName);

        RnSimulatedCom& mCom;
        const std::string mName;
        std::vector<Member> mMembers; ///< The id is the place, from 1.
        int mReferences = 0;
    };

    RnSimulatedCom();
    ~RnSimulatedCom() override;

    /// A new object for the tree.
    Object& make(const std::string& inName);
    /// The class is known to the system, with \a inObject as its running program; null when none is running.
    void registerProgram(const std::u16string& inProgramId, Object* inObject);

    /// That call fails from now on, or with Ok works again: a line of calls() without what stands behind " =
    /// ".
    void setResult(const std::string& inCall, RnComResult inResult) { mResults[inCall] = inResult; }

    /// What was called, such as "CoInitialize", "GetIDsOfNames Application.Selection", "Invoke 2
    /// Application.Selection", "Release Range".
    const std::vector<std::string>& calls() const { return mCalls; }
    void clearCalls() { mCalls.clear(); }
    /// All references that have not ended.
    int references() const;
    /// CoInitialize less CoUninitialize.
    int depth() const { return mDepth; }

    RnComResult initialize() override;
    void uninitialize() override;
    RnComResult classIdOf(const std::u16string& inProgramId, RnClassId& outId) override;
    RnUnknown* activeObject(const RnClassId& inId) override;

private:
    struct Program
    {
        std::u16string id;
        Object* object = nullptr;
    };
    /// Writes the call down and gives what it is to give.
    RnComResult call(const std::string& inCall);

    std::vector<std::unique_ptr<Object>> mObjects;
    std::vector<Program> mPrograms;
    std::map<std::string, RnComResult> mResults;
    std::vector<std::string> mCalls;
    int mDepth = 0;
};
