#pragma once

#include "RnWindows.h"

/// The windows of Windows. Each operation is the function or message that is named with it.
class RnWin32Windows final : public RnWindows
{
public:
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
};
