// Does the operations of the ports, as they are on Windows, for a program on the other side of a pipe.

#include "Lines.h"

#include <rnwin/RnCom.h>
#include <rnwin/RnWindows.h>

#include <functional>
#include <map>

namespace {

using Words = std::vector<std::string>;
using Operation = std::function<std::string(const Words&)>;

std::uintptr_t number(const std::string& inWord)
{
    return std::uintptr_t(std::stoll(inWord));
}

int integer(const std::string& inWord)
{
    return std::stoi(inWord);
}

std::map<std::string, Operation> operationsOn(RnWindows& inWindows)
{
    RnWindows& w = inWindows;
    return {
        {"enumWindows",
         [&](const Words&) {
             std::string all;
             w.enumWindows([&](RnWindows::Window inWindow) {
                 all += std::to_string(inWindow) + " ";
                 return true;
             });
             return all;
         }},
        {"firstWindow",
         [&](const Words&) {
             int count = 0;
             w.enumWindows([&](RnWindows::Window) { return ++count < 1; });
             return std::to_string(count);
         }},
        {"findWindowEx",
         [&](const Words& a) { return std::to_string(w.findWindowEx(number(a[1]), number(a[2]))); }},
        {"parent", [&](const Words& a) { return std::to_string(w.parent(number(a[1]))); }},
        {"isWindow", [&](const Words& a) { return std::to_string(w.isWindow(number(a[1]))); }},
        {"isWindowVisible", [&](const Words& a) { return std::to_string(w.isWindowVisible(number(a[1]))); }},
        {"className",
         [&](const Words& a) { return Lines::wideToHex(w.className(number(a[1]), integer(a[2]))); }},
        {"windowText",
         [&](const Words& a) { return Lines::wideToHex(w.windowText(number(a[1]), integer(a[2]))); }},
        {"processId", [&](const Words& a) { return std::to_string(w.processId(number(a[1]))); }},
        {"openProcess",
         [&](const Words& a) {
             return std::to_string(w.openProcess(std::uint32_t(number(a[1])), std::uint32_t(number(a[2]))));
         }},
        {"moduleFileName",
         [&](const Words& a) { return Lines::wideToHex(w.moduleFileName(number(a[1]), integer(a[2]))); }},
        {"closeHandle",
         [&](const Words& a) {
             w.closeHandle(number(a[1]));
             return std::string();
         }},
        {"wideText",
         [&](const Words& a) { return Lines::wideToHex(w.wideText(number(a[1]), integer(a[2]))); }},
        {"textLength", [&](const Words& a) { return std::to_string(w.textLength(number(a[1]))); }},
        {"text",
         [&](const Words& a) {
             std::string buffer(number(a[2]), '\0');
             w.text(number(a[1]), buffer.size(), buffer.data());
             return Lines::toHex(buffer);
         }},
        {"selection",
         [&](const Words& a) {
             const RnWindows::Selection selection = w.selection(number(a[1]));
             return std::to_string(selection.start) + " " + std::to_string(selection.end);
         }},
        {"setSelection",
         [&](const Words& a) {
             w.setSelection(number(a[1]), integer(a[2]), integer(a[3]));
             return std::string();
         }},
        {"replaceSelection",
         [&](const Words& a) {
             w.replaceSelection(number(a[1]), integer(a[2]), Lines::fromHex(a[3]));
             return std::string();
         }},
        {"fromLocal8Bit",
         [&](const Words& a) { return Lines::wideToHex(w.fromLocal8Bit(Lines::fromHex(a[1]))); }},
        {"toLocal8Bit",
         [&](const Words& a) { return Lines::toHex(w.toLocal8Bit(Lines::wideFromHex(a[1]))); }},
    };
}

/// Objects go by number: 0 is none.
class Objects
{
public:
    int add(RnUnknown* inObject)
    {
        if (!inObject)
            return 0;
        mUnknowns[++mLast] = inObject;
        return mLast;
    }
    int add(RnDispatch* inObject)
    {
        if (!inObject)
            return 0;
        mDispatches[++mLast] = inObject;
        return mLast;
    }
    RnUnknown& unknown(const std::string& inWord) { return *mUnknowns.at(integer(inWord)); }
    RnDispatch& dispatch(const std::string& inWord) { return *mDispatches.at(integer(inWord)); }

    void release(const std::string& inWord)
    {
        if (mUnknowns.count(integer(inWord)))
            mUnknowns.at(integer(inWord))->release();
        else
            mDispatches.at(integer(inWord))->release();
        mUnknowns.erase(integer(inWord));
        mDispatches.erase(integer(inWord));
    }

private:
    int mLast = 0;
    std::map<int, RnUnknown*> mUnknowns;
    std::map<int, RnDispatch*> mDispatches;
};

/// "invoke OBJECT ID LOCALE FLAGS WANTS_EXCEPTION WANTS_RESULT [named ID]... [i NUMBER | s TEXT]..."
std::string invoke(Objects& ioObjects, const Words& inWords)
{
    RnInvocation call;
    call.id = integer(inWords[2]);
    call.locale = std::uint32_t(number(inWords[3]));
    call.flags = std::uint16_t(number(inWords[4]));
    call.wantsException = inWords[5] == "1";
    for (std::size_t i = 7; i + 1 < inWords.size(); i += 2) {
        if (inWords[i] == "named")
            call.namedArguments.push_back(integer(inWords[i + 1]));
        else if (inWords[i] == "i")
            call.arguments.emplace_back(std::int32_t(integer(inWords[i + 1])));
        else
            call.arguments.emplace_back(Lines::wideFromHex(inWords[i + 1]));
    }
    RnDispatch* result = nullptr;
    const RnComResult status =
        ioObjects.dispatch(inWords[1]).invoke(call, inWords[6] == "1" ? &result : nullptr);
    return std::to_string(status) + " " + std::to_string(ioObjects.add(result));
}

std::map<std::string, Operation> operationsOn(RnCom& inCom, Objects& ioObjects)
{
    RnCom& com = inCom;
    Objects& objects = ioObjects;
    return {
        {"initialize", [&](const Words&) { return std::to_string(com.initialize()); }},
        {"uninitialize",
         [&](const Words&) {
             com.uninitialize();
             return std::string();
         }},
        {"classIdOf",
         [&](const Words& a) {
             RnClassId id;
             const RnComResult result = com.classIdOf(Lines::wideFromHex(a[1]), id);
             return std::to_string(result) + " " +
                    Lines::toHex({reinterpret_cast<const char*>(id.bytes), sizeof id.bytes});
         }},
        {"activeObject",
         [&](const Words& a) {
             RnClassId id;
             const std::string bytes = Lines::fromHex(a[1]);
             std::copy_n(bytes.begin(), sizeof id.bytes, id.bytes);
             return std::to_string(objects.add(com.activeObject(id)));
         }},
        {"queryDispatch",
         [&](const Words& a) {
             RnDispatch* dispatch = nullptr;
             const RnComResult result = objects.unknown(a[1]).queryDispatch(dispatch);
             return std::to_string(result) + " " + std::to_string(objects.add(dispatch));
         }},
        {"release",
         [&](const Words& a) {
             objects.release(a[1]);
             return std::string();
         }},
        {"idOfName",
         [&](const Words& a) {
             std::int32_t id = 0;
             const RnComResult result =
                 objects.dispatch(a[1]).idOfName(Lines::wideFromHex(a[2]), std::uint32_t(number(a[3])), id);
             return std::to_string(result) + " " + std::to_string(id);
         }},
        {"invoke", [&](const Words& a) { return invoke(objects, a); }},
    };
}

} // namespace

int main()
{
    const auto windows = RnWindows::ofSystem();
    const auto com = RnCom::ofSystem();
    Objects objects;
    auto operations = operationsOn(*windows);
    operations.merge(operationsOn(*com, objects));
    Lines::say("ready");
    for (Words words; Lines::read(words);) {
        const auto operation = words.empty() ? operations.end() : operations.find(words[0]);
        Lines::say(operation == operations.end() ? "unknown" : operation->second(words));
    }
    return 0;
}
