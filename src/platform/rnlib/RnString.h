#pragma once

#include <string>
#include <string_view>
#include <utility>

/// The platform's string: bytes in Latin-1 unless said otherwise, built from `const char*` and convertible
/// to it. A null pointer counts as the empty string; the converted pointer is never null and is valid until
/// the string changes or ends.
class RnString
{
public:
    RnString() = default;
    RnString(const char* inText)
        : mText(inText ? inText : "")
    {}
    RnString(std::string_view inText)
        : mText(inText)
    {}
    RnString(std::string inText)
        : mText(std::move(inText))
    {}

    operator const char*() const { return mText.c_str(); }
    /// Never: the converted pointer is not null, so `if (text)` would always hold. Ask isEmpty().
    explicit operator bool() const = delete;

    const char* c_str() const { return mText.c_str(); }
    const std::string& str() const { return mText; }

    bool isEmpty() const { return mText.empty(); }
    std::size_t length() const { return mText.size(); }

    /// The bytes as of a container, so that the string passes for the byte views of other libraries.
    const char* data() const { return mText.data(); }
    std::size_t size() const { return mText.size(); }
    auto begin() const { return mText.begin(); }
    auto end() const { return mText.end(); }

    RnString& operator+=(const RnString& inOther);
    friend RnString operator+(RnString inA, const RnString& inB) { return inA += inB; }

    /// Byte-wise, as strcmp does.
    friend bool operator==(const RnString& inA, const RnString& inB) { return inA.mText == inB.mText; }
    friend bool operator==(const RnString& inA, const char* inB) { return inA.mText == (inB ? inB : ""); }
    friend std::strong_ordering operator<=>(const RnString& inA, const RnString& inB)
    {
        return inA.mText.compare(inB.mText) <=> 0;
    }
    friend std::strong_ordering operator<=>(const RnString& inA, const char* inB)
    {
        return inA.mText.compare(inB ? inB : "") <=> 0;
    }

private:
    std::string mText;
};
