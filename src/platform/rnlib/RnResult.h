#pragma once

#include "RnString.h"

/// Outcome of a platform operation: ok, or a failure with a text for people.
class RnResult
{
public:
    /// A success.
    RnResult() = default;

    static RnResult ok() { return RnResult(); }
    /// A failure. \a inText is Latin-1; an empty one still is a failure.
    static RnResult failure(RnString inText);

    bool isOk() const { return mOk; }
    explicit operator bool() const { return mOk; }
    /// The text of the failure, empty after a success.
    const RnString& text() const { return mText; }

private:
    bool mOk = true;
    RnString mText;
};
