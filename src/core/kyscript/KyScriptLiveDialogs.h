#pragma once

class QObject;

/// All dialogs of scripts. None must outlive the application's windows, as engines can do: those that are
/// left end as the application begins to end.
class KyScriptLiveDialogs
{
public:
    KyScriptLiveDialogs() = delete;

    static void enter(QObject* inDialog);
    static void leave(QObject* inDialog);
};
