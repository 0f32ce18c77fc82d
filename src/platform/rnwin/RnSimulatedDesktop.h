#pragma once

#include "RnWindows.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <unordered_map>
#include <vector>

/// A desktop in memory: processes with their windows and controls, in the code page 1252.
///
/// The controls behave as those of Windows do: a rich-edit control counts the end of a line as one position
/// and gives it as "\r\n", an edit control has it as the two characters that they are. Handles are never
/// given twice in one process, also not by two desktops.
///
/// One thread only, but for wake() and isWaiting().
class RnSimulatedDesktop final : public RnWindows
{
public:
    enum class Kind
    {
        Plain, ///< Without a text of its own: messages about it give nothing.
        Edit,
        RichEdit,
    };

    struct Description
    {
        Window parent = 0; ///< 0 makes a top-level window.
        std::uint32_t process = 0;
        std::u16string className = {};
        std::u16string title = {};
        Kind kind = Kind::Plain;
        std::u16string text = {}; ///< With "\n" or "\r\n" at the ends of lines.
        bool isVisible = true;
    };

    /// Is told the name of each operation before it is done, and the window, or 0.
    using Observer = std::function<void(const char* inOperation, Window inWindow)>;

    RnSimulatedDesktop();
    ~RnSimulatedDesktop() override;

    /// Gives the id of the process. One that may not be opened runs under another account, say.
    std::uint32_t addProcess(const std::u16string& inPath, bool inMayBeOpened = true);
    /// Behind those that are there, of the same process as its parent. Gives 0 when the parent is not there.
    Window add(const Description& inDescription);
    /// With all that is in it.
    void destroy(Window inWindow);
    void setTitle(Window inWindow, const std::u16string& inTitle);
    void setVisible(Window inWindow, bool inIsVisible);

    /// From now on messages to that window wait.
    void hang(Window inWindow);
    /// Messages to that window are answered again. From any thread.
    void wake(Window inWindow);
    /// Whether a message waits for an answer. From any thread.
    bool isWaiting() const;

    /// The text of a control, with "\r\n" at the ends of lines.
    std::u16string content(Window inWindow) const;
    /// Takes the last replacement that can be undone back. Whether there was one.
    bool undo(Window inWindow);
    /// How many processes are open.
    int openProcesses() const { return int(mOpen.size()); }
    void setObserver(Observer inObserver) { mObserver = std::move(inObserver); }

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
    struct ProcessEntry
    {
        std::u16string path;
        bool mayBeOpened = true;
    };
    struct Node;

    void observe(const char* inOperation, Window inWindow) const;
    Node* find(Window inWindow) const;
    /// The control for a message, once it answers.
    Node* target(const char* inMessage, Window inWindow);
    std::vector<Window>& siblings(const Node& inNode);

    std::map<std::uint32_t, ProcessEntry> mProcesses;
    std::map<Process, std::uint32_t> mOpen;
    std::unordered_map<Window, std::unique_ptr<Node>> mNodes;
    std::vector<Window> mTopLevel;
    Observer mObserver;

    mutable std::mutex mMutex;
    std::condition_variable mAwake;
    std::vector<Window> mHung;
    int mWaiting = 0;
};
