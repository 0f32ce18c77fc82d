#pragma once

/// The files that the process may have open, of which each socket and each thread takes some.
///
/// A thread that finds none left ends the process (in GLib, or in Qt). So those who take many for a script
/// ask first.
class KyScriptOpenFiles
{
public:
    KyScriptOpenFiles() = delete;

    /// How many the process may have open.
    static long limit();

    /// Whether an eighth of them is left.
    static bool areLeft();
};
