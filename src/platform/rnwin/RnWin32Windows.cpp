#include "RnWin32Windows.h"

// Both MinGW and Wine's tools have UTF-16 in 16-bit units, under different names; so the texts here are of
// char16_t and cast where they meet the system.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#define PSAPI_VERSION 2
#include <windows.h>

#include <psapi.h>

#include <algorithm>

namespace {

HWND handle(RnWindows::Window inWindow)
{
    return reinterpret_cast<HWND>(inWindow);
}

RnWindows::Window window(HWND inHandle)
{
    return reinterpret_cast<RnWindows::Window>(inHandle);
}

/// What \a inRead gives when it gets a buffer and its size in characters, and gives how many it has put
/// there.
template <class Read>
std::u16string readText(int inCapacity, Read inRead)
{
    std::u16string buffer(std::size_t(std::max(inCapacity, 1)), u'\0');
    const auto size = std::size_t(std::max<long long>(
        static_cast<long long>(inRead(reinterpret_cast<LPWSTR>(buffer.data()), inCapacity)), 0));
    buffer.resize(std::min(size, buffer.size()));
    return buffer;
}

BOOL CALLBACK enumerate(HWND inHandle, LPARAM inCallback)
{
    const auto& callback = *reinterpret_cast<const std::function<bool(RnWindows::Window)>*>(inCallback);
    return callback(window(inHandle)) ? TRUE : FALSE;
}

} // namespace

void RnWin32Windows::enumWindows(const std::function<bool(Window)>& inCallback)
{
    EnumWindows(enumerate, reinterpret_cast<LPARAM>(&inCallback));
}

RnWindows::Window RnWin32Windows::findWindowEx(Window inParent, Window inAfter)
{
    return window(FindWindowExA(handle(inParent), handle(inAfter), nullptr, nullptr));
}

RnWindows::Window RnWin32Windows::parent(Window inWindow)
{
    return window(GetParent(handle(inWindow)));
}

bool RnWin32Windows::isWindow(Window inWindow)
{
    return IsWindow(handle(inWindow));
}

bool RnWin32Windows::isWindowVisible(Window inWindow)
{
    return IsWindowVisible(handle(inWindow));
}

std::u16string RnWin32Windows::className(Window inWindow, int inCapacity)
{
    return readText(inCapacity, [&](LPWSTR outBuffer, int inSize) {
        return GetClassNameW(handle(inWindow), outBuffer, inSize);
    });
}

std::u16string RnWin32Windows::windowText(Window inWindow, int inCapacity)
{
    return readText(inCapacity, [&](LPWSTR outBuffer, int inSize) {
        return GetWindowTextW(handle(inWindow), outBuffer, inSize);
    });
}

std::uint32_t RnWin32Windows::processId(Window inWindow)
{
    DWORD id = 0;
    GetWindowThreadProcessId(handle(inWindow), &id);
    return id;
}

RnWindows::Process RnWin32Windows::openProcess(std::uint32_t inAccess, std::uint32_t inProcessId)
{
    return reinterpret_cast<Process>(OpenProcess(inAccess, FALSE, inProcessId));
}

std::u16string RnWin32Windows::moduleFileName(Process inProcess, int inCapacity)
{
    return readText(inCapacity, [&](LPWSTR outBuffer, int inSize) {
        return K32GetModuleFileNameExW(reinterpret_cast<HANDLE>(inProcess), nullptr, outBuffer,
                                       DWORD(inSize));
    });
}

void RnWin32Windows::closeHandle(Process inProcess)
{
    CloseHandle(reinterpret_cast<HANDLE>(inProcess));
}

std::u16string RnWin32Windows::wideText(Window inWindow, int inCapacity)
{
    return readText(inCapacity, [&](LPWSTR outBuffer, int inSize) {
        return SendMessageW(handle(inWindow), WM_GETTEXT, WPARAM(inSize),
                            reinterpret_cast<LPARAM>(outBuffer));
    });
}

std::intptr_t RnWin32Windows::textLength(Window inWindow)
{
    return SendMessageA(handle(inWindow), WM_GETTEXTLENGTH, 0, 0);
}

void RnWin32Windows::text(Window inWindow, std::size_t inSize, char* outBuffer)
{
    SendMessageA(handle(inWindow), WM_GETTEXT, inSize, reinterpret_cast<LPARAM>(outBuffer));
}

RnWindows::Selection RnWin32Windows::selection(Window inWindow)
{
    DWORD start = 0;
    DWORD end = 0;
    SendMessageA(handle(inWindow), EM_GETSEL, reinterpret_cast<WPARAM>(&start),
                 reinterpret_cast<LPARAM>(&end));
    return {std::uint32_t(start), std::uint32_t(end)};
}

void RnWin32Windows::setSelection(Window inWindow, int inStart, int inEnd)
{
    SendMessageA(handle(inWindow), EM_SETSEL, WPARAM(inStart), LPARAM(inEnd));
}

void RnWin32Windows::replaceSelection(Window inWindow, bool inCanUndo, const std::string& inText)
{
    SendMessageA(handle(inWindow), EM_REPLACESEL, inCanUndo ? TRUE : FALSE,
                 reinterpret_cast<LPARAM>(inText.c_str()));
}

std::u16string RnWin32Windows::fromLocal8Bit(std::string_view inText)
{
    const int bytes = int(inText.size());
    const int size = bytes ? MultiByteToWideChar(CP_ACP, 0, inText.data(), bytes, nullptr, 0) : 0;
    std::u16string text(std::size_t(size), u'\0');
    if (size)
        MultiByteToWideChar(CP_ACP, 0, inText.data(), bytes, reinterpret_cast<LPWSTR>(text.data()), size);
    return text;
}

std::string RnWin32Windows::toLocal8Bit(std::u16string_view inText)
{
    const auto* units = reinterpret_cast<LPCWSTR>(inText.data());
    const int count = int(inText.size());
    const int size = count ? WideCharToMultiByte(CP_ACP, 0, units, count, nullptr, 0, nullptr, nullptr) : 0;
    std::string text(std::size_t(size), '\0');
    if (size)
        WideCharToMultiByte(CP_ACP, 0, units, count, text.data(), size, nullptr, nullptr);
    return text;
}
