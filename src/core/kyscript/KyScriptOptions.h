#pragma once

/// Bits of the mask that decides what an engine's global namespace holds. Each names the global that it
/// installs; callers pass an int. -1 sets every bit.
///
/// With a mask of 0 nothing of the constructor is installed, but for the three external bits 0 means all of
/// them: every evaluation adds what other modules have registered.
enum KyScriptOption : int
{
    ScriptGlobal = 0x1,
    ScriptMessage = 0x2,
    ScriptServer = 0x4,
    ScriptOrvane = 0x8,
    ScriptStudyList = 0x10,
    ScriptSystem = 0x20,
    ScriptUrl = 0x40,
    ScriptXmlFileWriter = 0x80,
    ScriptHttpRequest = 0x100,
    ScriptAuthToken = 0x200,
    ScriptFileWriter = 0x400,
    ScriptBrowserCtrl = 0x800,
    ScriptWebSocket = 0x1000,
    ScriptWebSocketServer = 0x2000,
    ScriptFileDialog = 0x4000,
    ScriptTimer = 0x8000,
    ScriptWordCtrl = 0x10000,
    ScriptRichEditCtrl = 0x20000,
    ScriptExternalKindA = 0x40000,
    ScriptExternalKindB = 0x80000,
    ScriptExternalMetaObjects = 0x100000,
    ScriptIdGenerator = 0x200000,
    ScriptDialog = 0x400000,

    ScriptAllOptions = -1
};
