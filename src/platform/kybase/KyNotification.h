#pragma once

#include <ovbase/OvSessionContextID.h>

#include <cstdint>

class OvVariant;

/// Word of something that has happened. See KyNotifiable for how it is sent and heard.
struct KyNotification
{
    /// The studies of the session are closed: what belongs to the work on them ends.
    static constexpr int SessionClosed = 1;
    /// The studies on the screen are those of another patient now: likewise.
    static constexpr int PatientChanged = 112;
    /// The properties' code: the effective value of `property` has changed.
    static constexpr int PropertyChanged = 102;

    explicit KyNotification(int inCode = 0, std::uintptr_t inFirstWord = 0, std::uintptr_t inSecondWord = 0,
                            const OvVariant* inProperty = nullptr, OvSessionContextID inSession = {})
        : code(inCode)
        , firstWord(inFirstWord)
        , secondWord(inSecondWord)
        , property(inProperty)
        , session(inSession)
    {}

    int code;
    std::uintptr_t firstWord; ///< What this and the second mean, the code tells.
    std::uintptr_t secondWord;
    const OvVariant* property;  ///< Valid during the notification only.
    OvSessionContextID session; ///< The default one when no session is meant in particular.

    /// Whether this, as what a receiver wants to hear of, covers \a inSent: the same code, and for each other
    /// field the same, unless this one leaves it empty. What is sent to no session in particular is for all.
    bool covers(const KyNotification& inSent) const;
};
