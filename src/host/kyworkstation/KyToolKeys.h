#pragma once

/// The keys that the user gives tools: the property "Workstation.ToolKeys", a list of texts such as
/// "Site.CopyPatient=Ctrl+Shift+C". It holds from the next start on.
class KyToolKeys
{
public:
    static constexpr const char* PropertyId = "Workstation.ToolKeys";

    KyToolKeys() = delete;

    static void registerProperties();

    /// Gives the tools that there are their keys; an entry without keys takes those away that a tool has by
    /// itself. The log tells of entries that can't be used.
    static void apply();
};
