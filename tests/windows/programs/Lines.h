#pragma once

#include <cstdint>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

/// How the programs of these tests speak with who has started them: a line in, a line out. Words stand with
/// blanks between them; texts are hexadecimal, "-" for an empty one.
namespace Lines {

inline std::vector<std::string> words(const std::string& inLine)
{
    std::istringstream stream(inLine);
    std::vector<std::string> result;
    for (std::string word; stream >> word;)
        result.push_back(word);
    return result;
}

inline bool read(std::vector<std::string>& outWords)
{
    std::string line;
    if (!std::getline(std::cin, line))
        return false;
    outWords = words(line);
    return true;
}

inline void say(const std::string& inLine)
{
    std::fputs((inLine + "\n").c_str(), stdout);
    std::fflush(stdout);
}

inline std::string toHex(std::string_view inBytes)
{
    static const char digits[] = "0123456789abcdef";
    std::string hex;
    for (const char c : inBytes) {
        const auto byte = static_cast<unsigned char>(c);
        hex += digits[byte >> 4];
        hex += digits[byte & 15];
    }
    return hex.empty() ? "-" : hex;
}

inline std::string fromHex(const std::string& inHex)
{
    std::string bytes;
    for (std::size_t i = 0; i + 1 < inHex.size(); i += 2)
        bytes += char(std::stoi(inHex.substr(i, 2), nullptr, 16));
    return bytes;
}

inline std::string wideToHex(const std::u16string& inText)
{
    return toHex({reinterpret_cast<const char*>(inText.data()), inText.size() * 2});
}

inline std::u16string wideFromHex(const std::string& inHex)
{
    const std::string bytes = fromHex(inHex);
    return {reinterpret_cast<const char16_t*>(bytes.data()), bytes.size() / 2};
}

} // namespace Lines
