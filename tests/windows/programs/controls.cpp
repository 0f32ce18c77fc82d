// A program with rich-edit and edit controls, which tells by itself what stands in them.
//
// The window "Report of Doe" has the panel "Text" with the controls 0 (RICHEDIT50W), 1 (RichEdit20W) and
// 2 (EDIT, of several lines). It ends with its standard input.

#include "Lines.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <richedit.h>

#include <thread>

namespace {

constexpr UINT Order = WM_APP + 1;

HWND sTop = nullptr;
HWND sControls[3] = {};

LPCWSTR wide(const char16_t* inText)
{
    return reinterpret_cast<LPCWSTR>(inText);
}

DWORD CALLBACK collect(DWORD_PTR inCookie, LPBYTE inBuffer, LONG inSize, LONG* outDone)
{
    reinterpret_cast<std::string*>(inCookie)->append(reinterpret_cast<const char*>(inBuffer),
                                                     std::size_t(inSize));
    *outDone = inSize;
    return 0;
}

/// A rich-edit control writes it out as to a file; a plain one is asked for its memory.
std::u16string content(int inControl)
{
    if (inControl == 2) {
        const auto memory = reinterpret_cast<HLOCAL>(SendMessageW(sControls[2], EM_GETHANDLE, 0, 0));
        const std::u16string text = static_cast<const char16_t*>(LocalLock(memory));
        LocalUnlock(memory);
        return text;
    }
    std::string bytes;
    EDITSTREAM stream = {reinterpret_cast<DWORD_PTR>(&bytes), 0, collect};
    SendMessageW(sControls[inControl], EM_STREAMOUT, SF_TEXT | SF_UNICODE, reinterpret_cast<LPARAM>(&stream));
    return {reinterpret_cast<const char16_t*>(bytes.data()), bytes.size() / 2};
}

std::string carryOut(const std::vector<std::string>& inWords)
{
    const std::string& order = inWords[0];
    const int control = inWords.size() > 1 ? std::stoi(inWords[1]) : 0;
    const HWND window = sControls[control];
    if (order == "content")
        return Lines::wideToHex(content(control));
    if (order == "set")
        SetWindowTextW(window, wide(Lines::wideFromHex(inWords[2]).c_str()));
    else if (order == "bold")
        return std::to_string([&] {
            CHARFORMAT2W format = {};
            format.cbSize = sizeof format;
            format.dwMask = CFM_BOLD;
            format.dwEffects = CFE_BOLD;
            return SendMessageW(window, EM_SETCHARFORMAT, SCF_SELECTION, reinterpret_cast<LPARAM>(&format));
        }());
    else if (order == "undo")
        return std::to_string(SendMessageW(window, EM_UNDO, 0, 0));
    else if (order == "clearUndo")
        SendMessageW(window, EM_EMPTYUNDOBUFFER, 0, 0);
    else if (order == "show")
        ShowWindow(window, SW_SHOW);
    else if (order == "hide")
        ShowWindow(window, SW_HIDE);
    else if (order == "destroy")
        DestroyWindow(window);
    else if (order == "handle")
        return std::to_string(reinterpret_cast<std::uintptr_t>(window));
    else if (order == "selection") {
        DWORD start = 0;
        DWORD end = 0;
        SendMessageW(window, EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
        return std::to_string(start) + " " + std::to_string(end);
    }
    return "ok";
}

LRESULT CALLBACK answer(HWND inWindow, UINT inMessage, WPARAM inW, LPARAM inL)
{
    if (inMessage == Order) {
        Lines::say(carryOut(*reinterpret_cast<const std::vector<std::string>*>(inL)));
        return 0;
    }
    if (inMessage == WM_DESTROY && inWindow == sTop)
        PostQuitMessage(0);
    return DefWindowProcW(inWindow, inMessage, inW, inL);
}

HWND make(const char16_t* inClass, const char16_t* inTitle, HWND inParent, DWORD inStyle, int inTop = 0)
{
    return CreateWindowExW(0, wide(inClass), wide(inTitle), inStyle | WS_VISIBLE, 0, inTop, 300, 100,
                           inParent, nullptr, GetModuleHandleW(nullptr), nullptr);
}

} // namespace

int main()
{
    LoadLibraryW(wide(u"Msftedit.dll"));
    LoadLibraryW(wide(u"Riched20.dll"));
    WNDCLASSW frame = {};
    frame.lpfnWndProc = answer;
    frame.hInstance = GetModuleHandleW(nullptr);
    frame.lpszClassName = wide(u"KyTestFrame");
    RegisterClassW(&frame);

    sTop = make(u"KyTestFrame", u"Report of Doe", nullptr, WS_OVERLAPPEDWINDOW);
    const HWND panel = make(u"KyTestFrame", u"Text", sTop, WS_CHILD);
    const DWORD lines = WS_CHILD | ES_MULTILINE;
    sControls[0] = make(u"RICHEDIT50W", u"", panel, lines, 0);
    sControls[1] = make(u"RichEdit20W", u"", panel, lines, 100);
    sControls[2] = make(u"EDIT", u"", panel, lines, 200);
    if (!sTop || !sControls[0] || !sControls[1] || !sControls[2]) {
        Lines::say("no windows");
        return 1;
    }

    std::thread reader([] {
        for (std::vector<std::string> words; Lines::read(words);)
            SendMessageW(sTop, Order, 0, reinterpret_cast<LPARAM>(&words));
        PostMessageW(sTop, WM_CLOSE, 0, 0);
    });
    Lines::say("ready");
    for (MSG message; GetMessageW(&message, nullptr, 0, 0) > 0;)
        DispatchMessageW(&message);
    reader.detach();
    std::fflush(stdout);
    ExitProcess(0);
}
