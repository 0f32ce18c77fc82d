#include "RnSimulatedDesktop.h"

#include "RnCodePage1252.h"

#include <algorithm>
#include <atomic>
#include <cstring>

struct RnSimulatedDesktop::Node
{
    Window window = 0;
    Description description;
    std::vector<Window> children;
    std::size_t place = 0; ///< Among the children of the parent.
    /// In a rich-edit control with "\r" at the end of a line, else as it is read.
    std::u16string text;
    std::u16string before; ///< What undo brings back.
    bool canUndo = false;
    Selection selection;

    bool isRich() const { return description.kind == Kind::RichEdit; }
    std::u16string content() const;
};

namespace {

/// With one kind of line end in place of "\r\n", "\n" and "\r".
std::u16string withLineEnds(std::u16string_view inText, std::u16string_view inLineEnd)
{
    std::u16string result;
    result.reserve(inText.size());
    for (std::size_t i = 0; i < inText.size(); ++i) {
        if (inText[i] != u'\r' && inText[i] != u'\n') {
            result += inText[i];
            continue;
        }
        if (inText[i] == u'\r' && i + 1 < inText.size() && inText[i + 1] == u'\n')
            ++i;
        result += inLineEnd;
    }
    return result;
}

std::u16string cut(const std::u16string& inText, int inCapacity)
{
    return inText.substr(0, std::size_t(std::max(inCapacity - 1, 0)));
}

std::uintptr_t nextHandle()
{
    static std::atomic<std::uintptr_t> sLast{0x10000};
    return sLast += 2;
}

} // namespace

std::u16string RnSimulatedDesktop::Node::content() const
{
    return isRich() ? withLineEnds(text, u"\r\n") : text;
}

RnSimulatedDesktop::RnSimulatedDesktop() = default;
RnSimulatedDesktop::~RnSimulatedDesktop() = default;

std::uint32_t RnSimulatedDesktop::addProcess(const std::u16string& inPath, bool inMayBeOpened)
{
    const auto id = std::uint32_t(nextHandle());
    mProcesses[id] = {inPath, inMayBeOpened};
    return id;
}

RnSimulatedDesktop::Window RnSimulatedDesktop::add(const Description& inDescription)
{
    const Node* above = find(inDescription.parent);
    if (inDescription.parent && !above)
        return 0;
    auto node = std::make_unique<Node>();
    node->window = nextHandle();
    node->description = inDescription;
    if (above)
        node->description.process = above->description.process;
    node->text = withLineEnds(inDescription.text, node->isRich() ? u"\r" : u"\r\n");
    std::vector<Window>& beside = siblings(*node);
    node->place = beside.size();
    beside.push_back(node->window);
    const Window window = node->window;
    mNodes[window] = std::move(node);
    return window;
}

void RnSimulatedDesktop::destroy(Window inWindow)
{
    Node* node = find(inWindow);
    if (!node)
        return;
    while (!node->children.empty())
        destroy(node->children.back());
    std::vector<Window>& beside = siblings(*node);
    beside.erase(beside.begin() + std::ptrdiff_t(node->place));
    for (std::size_t i = node->place; i < beside.size(); ++i)
        find(beside[i])->place = i;
    mNodes.erase(inWindow);
    wake(inWindow);
}

void RnSimulatedDesktop::setTitle(Window inWindow, const std::u16string& inTitle)
{
    if (Node* node = find(inWindow))
        node->description.title = inTitle;
}

void RnSimulatedDesktop::setVisible(Window inWindow, bool inIsVisible)
{
    if (Node* node = find(inWindow))
        node->description.isVisible = inIsVisible;
}

void RnSimulatedDesktop::hang(Window inWindow)
{
    const std::lock_guard lock(mMutex);
    mHung.push_back(inWindow);
}

void RnSimulatedDesktop::wake(Window inWindow)
{
    const std::lock_guard lock(mMutex);
    std::erase(mHung, inWindow);
    mAwake.notify_all();
}

bool RnSimulatedDesktop::isWaiting() const
{
    const std::lock_guard lock(mMutex);
    return mWaiting > 0;
}

std::u16string RnSimulatedDesktop::content(Window inWindow) const
{
    const Node* node = find(inWindow);
    return node ? node->content() : std::u16string();
}

bool RnSimulatedDesktop::undo(Window inWindow)
{
    Node* node = find(inWindow);
    if (!node || !node->canUndo)
        return false;
    node->text = node->before;
    node->selection = {};
    node->canUndo = false;
    return true;
}

void RnSimulatedDesktop::observe(const char* inOperation, Window inWindow) const
{
    if (mObserver)
        mObserver(inOperation, inWindow);
}

RnSimulatedDesktop::Node* RnSimulatedDesktop::find(Window inWindow) const
{
    const auto found = mNodes.find(inWindow);
    return found == mNodes.end() ? nullptr : found->second.get();
}

RnSimulatedDesktop::Node* RnSimulatedDesktop::target(const char* inMessage, Window inWindow)
{
    observe(inMessage, inWindow);
    {
        std::unique_lock lock(mMutex);
        ++mWaiting;
        mAwake.wait(lock, [&] { return std::find(mHung.begin(), mHung.end(), inWindow) == mHung.end(); });
        --mWaiting;
    }
    Node* node = find(inWindow);
    return node && node->description.kind != Kind::Plain ? node : nullptr;
}

std::vector<RnSimulatedDesktop::Window>& RnSimulatedDesktop::siblings(const Node& inNode)
{
    Node* above = find(inNode.description.parent);
    return above ? above->children : mTopLevel;
}

void RnSimulatedDesktop::enumWindows(const std::function<bool(Window)>& inCallback)
{
    observe("EnumWindows", 0);
    const std::vector<Window> windows = mTopLevel;
    for (const Window window : windows) {
        if (!inCallback(window))
            return;
    }
}

RnSimulatedDesktop::Window RnSimulatedDesktop::findWindowEx(Window inParent, Window inAfter)
{
    observe("FindWindowExA", inParent);
    const Node* above = find(inParent);
    const Node* after = find(inAfter);
    if (!above || (inAfter && (!after || after->description.parent != inParent)))
        return 0;
    const std::size_t next = after ? after->place + 1 : 0;
    return next < above->children.size() ? above->children[next] : 0;
}

RnSimulatedDesktop::Window RnSimulatedDesktop::parent(Window inWindow)
{
    observe("GetParent", inWindow);
    const Node* node = find(inWindow);
    return node ? node->description.parent : 0;
}

bool RnSimulatedDesktop::isWindow(Window inWindow)
{
    observe("IsWindow", inWindow);
    return find(inWindow) != nullptr;
}

bool RnSimulatedDesktop::isWindowVisible(Window inWindow)
{
    observe("IsWindowVisible", inWindow);
    const Node* node = find(inWindow);
    while (node && node->description.isVisible && node->description.parent)
        node = find(node->description.parent);
    return node && node->description.isVisible;
}

std::u16string RnSimulatedDesktop::className(Window inWindow, int inCapacity)
{
    observe("GetClassNameW", inWindow);
    const Node* node = find(inWindow);
    return node ? cut(node->description.className, inCapacity) : std::u16string();
}

std::u16string RnSimulatedDesktop::windowText(Window inWindow, int inCapacity)
{
    observe("GetWindowTextW", inWindow);
    const Node* node = find(inWindow);
    return node ? cut(node->description.title, inCapacity) : std::u16string();
}

std::uint32_t RnSimulatedDesktop::processId(Window inWindow)
{
    observe("GetWindowThreadProcessId", inWindow);
    const Node* node = find(inWindow);
    return node ? node->description.process : 0;
}

RnSimulatedDesktop::Process RnSimulatedDesktop::openProcess(std::uint32_t inAccess, std::uint32_t inProcessId)
{
    observe("OpenProcess", 0);
    const auto found = mProcesses.find(inProcessId);
    if (inAccess != QueryAndRead || found == mProcesses.end() || !found->second.mayBeOpened)
        return 0;
    const Process process = nextHandle();
    mOpen[process] = inProcessId;
    return process;
}

std::u16string RnSimulatedDesktop::moduleFileName(Process inProcess, int inCapacity)
{
    observe("K32GetModuleFileNameExW", 0);
    const auto found = mOpen.find(inProcess);
    return found == mOpen.end() ? std::u16string() : cut(mProcesses[found->second].path, inCapacity + 1);
}

void RnSimulatedDesktop::closeHandle(Process inProcess)
{
    observe("CloseHandle", 0);
    mOpen.erase(inProcess);
}

std::u16string RnSimulatedDesktop::wideText(Window inWindow, int inCapacity)
{
    const Node* node = target("WM_GETTEXT W", inWindow);
    return node ? cut(node->content(), inCapacity) : std::u16string();
}

std::intptr_t RnSimulatedDesktop::textLength(Window inWindow)
{
    const Node* node = target("WM_GETTEXTLENGTH", inWindow);
    return node ? std::intptr_t(toLocal8Bit(node->content()).size()) : 0;
}

void RnSimulatedDesktop::text(Window inWindow, std::size_t inSize, char* outBuffer)
{
    const Node* node = target("WM_GETTEXT", inWindow);
    if (!node || inSize == 0)
        return;
    const std::string bytes = toLocal8Bit(node->content());
    const std::size_t size = std::min(bytes.size(), inSize - 1);
    std::memcpy(outBuffer, bytes.data(), size);
    outBuffer[size] = '\0';
}

RnSimulatedDesktop::Selection RnSimulatedDesktop::selection(Window inWindow)
{
    const Node* node = target("EM_GETSEL", inWindow);
    return node ? node->selection : Selection();
}

/// A negative start ends the selection where it ends, a negative end is that of the text: in a rich-edit
/// control that is one behind its last character.
void RnSimulatedDesktop::setSelection(Window inWindow, int inStart, int inEnd)
{
    Node* node = target("EM_SETSEL", inWindow);
    if (!node)
        return;
    if (inStart < 0) {
        node->selection.start = node->selection.end;
        return;
    }
    const auto size = std::uint32_t(node->text.size());
    const std::uint32_t last = inEnd < 0 && node->isRich() ? size + 1 : size;
    const std::uint32_t start = std::min(std::uint32_t(inStart), size);
    const std::uint32_t end = inEnd < 0 ? last : std::min(std::uint32_t(inEnd), size);
    node->selection = {std::min(start, end), std::max(start, end)};
}

void RnSimulatedDesktop::replaceSelection(Window inWindow, bool inCanUndo, const std::string& inText)
{
    Node* node = target("EM_REPLACESEL", inWindow);
    if (!node)
        return;
    std::u16string text = fromLocal8Bit(inText.substr(0, inText.find('\0')));
    if (node->isRich())
        text = withLineEnds(text, u"\r");
    node->before = node->text;
    node->canUndo = inCanUndo;
    const std::size_t start = node->selection.start;
    const std::size_t end = std::min<std::size_t>(node->selection.end, node->text.size());
    node->text.replace(start, end - start, text);
    node->selection.start = node->selection.end = std::uint32_t(start + text.size());
}

std::u16string RnSimulatedDesktop::fromLocal8Bit(std::string_view inText)
{
    return RnCodePage1252::decoded(inText);
}

std::string RnSimulatedDesktop::toLocal8Bit(std::u16string_view inText)
{
    return RnCodePage1252::encoded(inText);
}
