#pragma once

#include "Wine.h"

#include <rnwin/RnCom.h>
#include <rnwin/RnWindows.h>

#include <map>

/// The windows of Windows, by way of a process there that does each operation.
class DriverWindows final : public RnWindows
{
public:
    explicit DriverWindows(WineProgram& inDriver)
        : mDriver(inDriver)
    {}

    void enumWindows(const std::function<bool(Window)>& inCallback) override;
    Window findWindowEx(Window inParent, Window inAfter) override;
    Window parent(Window inWindow) override;
    bool isWindow(Window inWindow) override;
    bool isWindowVisible(Window inWindow) override;
    std::u16string className(Window inWindow, int inCapacity) override;
    std::u16string windowText(Window inWindow, int inCapacity) override;
    std::uint32_t processId(Window inWindow) override;
    Process openProcess(std::uint32_t inAccess, std::uint32_t inProcessId) override;
    std::u16string moduleFileName(Process inProcess, int inCapacity) override;
    void closeHandle(Process inProcess) override;
    std::u16string wideText(Window inWindow, int inCapacity) override;
    std::intptr_t textLength(Window inWindow) override;
    void text(Window inWindow, std::size_t inSize, char* outBuffer) override;
    Selection selection(Window inWindow) override;
    void setSelection(Window inWindow, int inStart, int inEnd) override;
    void replaceSelection(Window inWindow, bool inCanUndo, const std::string& inText) override;
    std::u16string fromLocal8Bit(std::string_view inText) override;
    std::string toLocal8Bit(std::u16string_view inText) override;

private:
    /// The operation with numbers as arguments.
    template <class... Numbers>
    std::string ask(const char* inOperation, Numbers... inNumbers)
    {
        return mDriver.ask((std::string(inOperation) + ... + (" " + std::to_string(inNumbers))));
    }
    template <class... Numbers>
    long long number(const char* inOperation, Numbers... inNumbers)
    {
        const std::string answer = ask(inOperation, inNumbers...);
        return answer.empty() ? 0 : std::stoll(answer);
    }

    WineProgram& mDriver;
};

/// The COM of Windows, likewise.
class DriverCom final : public RnCom
{
public:
    explicit DriverCom(WineProgram& inDriver)
        : mDriver(inDriver)
    {}

    RnComResult initialize() override;
    void uninitialize() override;
    RnComResult classIdOf(const std::u16string& inProgramId, RnClassId& outId) override;
    RnUnknown* activeObject(const RnClassId& inId) override;

private:
    WineProgram& mDriver;
};
