#pragma once

/// One wait of a script in which events are served.
///
/// What is served may call scripts that wait in their turn. Scripts that do so without end would exhaust the
/// stack; so inside as many waits as Deepest no further one takes place, and the log tells of the first that
/// is left out.
class KyScriptWait
{
public:
    static constexpr int Deepest = 100;

    KyScriptWait();
    ~KyScriptWait();
    KyScriptWait(const KyScriptWait&) = delete;
    KyScriptWait& operator=(const KyScriptWait&) = delete;

    /// Whether the caller is to serve events. Otherwise it gives what it would give after an empty wait.
    bool mayBegin() const { return mMayBegin; }

private:
    const bool mMayBegin;
};
