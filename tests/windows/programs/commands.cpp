// Commands for programs that nobody here wrote: finds the command of a menu entry in the program's file, and
// posts it to a window.

#include "Lines.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

namespace {

/// The command of the first entry with that text in front of its key, in any menu below.
UINT commandIn(HMENU inMenu, const std::string& inText)
{
    for (int i = 0; i < GetMenuItemCount(inMenu); ++i) {
        char text[200] = {};
        GetMenuStringA(inMenu, UINT(i), text, sizeof text, MF_BYPOSITION);
        if (const HMENU below = GetSubMenu(inMenu, i)) {
            if (const UINT command = commandIn(below, inText))
                return command;
        } else if (const std::string name(text); name.substr(0, name.find('\t')) == inText) {
            return GetMenuItemID(inMenu, i);
        }
    }
    return 0;
}

struct Search
{
    std::string text;
    UINT command = 0;
};

BOOL CALLBACK look(HMODULE inModule, LPCWSTR, LPWSTR inName, LONG_PTR inSearch)
{
    auto& search = *reinterpret_cast<Search*>(inSearch);
    const HMENU menu = LoadMenuW(inModule, inName);
    search.command = menu ? commandIn(menu, search.text) : 0;
    DestroyMenu(menu);
    return search.command ? FALSE : TRUE;
}

/// "command PROGRAM TEXT"
std::string command(const std::vector<std::string>& inWords)
{
    const std::u16string path = Lines::wideFromHex(inWords[1]);
    const HMODULE module =
        LoadLibraryExW(reinterpret_cast<LPCWSTR>(path.c_str()), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    Search search{inWords[2], 0};
    EnumResourceNamesW(module, reinterpret_cast<LPCWSTR>(RT_MENU), look, reinterpret_cast<LONG_PTR>(&search));
    return std::to_string(search.command);
}

} // namespace

int main()
{
    Lines::say("ready");
    for (std::vector<std::string> words; Lines::read(words);) {
        if (words[0] == "command")
            Lines::say(command(words));
        else if (words[0] == "send")
            Lines::say(
                std::to_string(SendMessageA(reinterpret_cast<HWND>(std::stoull(words[1])),
                                            UINT(std::stoul(words[2])), WPARAM(std::stoul(words[3])), 0)));
        else
            Lines::say(
                std::to_string(PostMessageA(reinterpret_cast<HWND>(std::stoull(words[1])),
                                            UINT(std::stoul(words[2])), WPARAM(std::stoul(words[3])), 0)));
    }
    return 0;
}
