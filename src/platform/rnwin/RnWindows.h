#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

/// Port: the windows of all programs of the desktop, and the standard messages to their controls.
/// RnWin32Windows, RnSimulatedDesktop.
///
/// Each operation is the one of Windows that is named with it, no more: what a control is looked for by, and
/// what is done with its text, is the caller's matter. The system carries the messages across processes;
/// nothing is put into the memory of another one. A message has no time limit: one to a window that does not
/// answer waits until it does. A window that is gone gives 0, false or nothing, as with Windows.
///
/// Somebody's object: construction makes it the one that instance() finds, destruction ends that. GUI thread
/// only.
class RnWindows
{
public:
    using Window = std::uintptr_t;  ///< 0 is none.
    using Process = std::uintptr_t; ///< A process that was opened; 0 is none.

    /// What is selected in a control, in its own positions: a rich-edit control counts the end of a line as
    /// one, a plain one as two.
    struct Selection
    {
        std::uint32_t start = 0;
        std::uint32_t end = 0;
    };

    /// PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, which is what a module's name needs.
    static constexpr std::uint32_t QueryAndRead = 0x410;

    RnWindows();
    virtual ~RnWindows();
    RnWindows(const RnWindows&) = delete;
    RnWindows& operator=(const RnWindows&) = delete;

    /// Null where nobody has made one, as on systems without such windows.
    static RnWindows* instance();
    /// The windows of this system; null on a system other than Windows.
    static std::unique_ptr<RnWindows> ofSystem();

    /// EnumWindows: the top-level windows from the front to the back, until \a inCallback gives false.
    virtual void enumWindows(const std::function<bool(Window)>& inCallback) = 0;
    /// FindWindowExA without names: the direct child of \a inParent behind \a inAfter, the first one for 0.
    virtual Window findWindowEx(Window inParent, Window inAfter) = 0;
    /// GetParent; 0 for a top-level window.
    virtual Window parent(Window inWindow) = 0;
    virtual bool isWindow(Window inWindow) = 0;
    /// IsWindowVisible: the window and all above it are on show, maybe behind others.
    virtual bool isWindowVisible(Window inWindow) = 0;
    /// GetClassNameW; of at most \a inCapacity - 1 characters, as the two that follow.
    virtual std::u16string className(Window inWindow, int inCapacity) = 0;
    /// GetWindowTextW: the title.
    virtual std::u16string windowText(Window inWindow, int inCapacity) = 0;

    /// GetWindowThreadProcessId.
    virtual std::uint32_t processId(Window inWindow) = 0;
    /// OpenProcess; 0 for one that may not be opened. Ends with closeHandle().
    virtual Process openProcess(std::uint32_t inAccess, std::uint32_t inProcessId) = 0;
    /// K32GetModuleFileNameExW: the path of the main module.
    virtual std::u16string moduleFileName(Process inProcess, int inCapacity) = 0;
    virtual void closeHandle(Process inProcess) = 0;

    /// SendMessageW with WM_GETTEXT: the beginning of the text, of at most \a inCapacity - 1 characters.
    virtual std::u16string wideText(Window inWindow, int inCapacity) = 0;

    // From here on SendMessageA: texts in the code page of this process.

    /// WM_GETTEXTLENGTH, in bytes; maybe more than the text has.
    virtual std::intptr_t textLength(Window inWindow) = 0;
    /// WM_GETTEXT into \a outBuffer of \a inSize bytes, with a NUL at its end.
    virtual void text(Window inWindow, std::size_t inSize, char* outBuffer) = 0;
    /// EM_GETSEL.
    virtual Selection selection(Window inWindow) = 0;
    /// EM_SETSEL; 0 and -1 select everything.
    virtual void setSelection(Window inWindow, int inStart, int inEnd) = 0;
    /// EM_REPLACESEL.
    virtual void replaceSelection(Window inWindow, bool inCanUndo, const std::string& inText) = 0;

    /// The code page of this process, by which the texts of SendMessageA are encoded. What it does not have
    /// becomes what the system makes of it, often a question mark.
    virtual std::u16string fromLocal8Bit(std::string_view inText) = 0;
    virtual std::string toLocal8Bit(std::u16string_view inText) = 0;
};
