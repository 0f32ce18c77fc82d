#pragma once

#include "KyScriptExport.h"

#include <kybase/KyObsoleteTrigger.h>

#include <QtCore/QString>

#include <memory>
#include <vector>

class KyScriptProgram;
class QDomElement;

/// A tool bar tool that runs scripts, from a tool configuration file.
///
/// loadTools() makes one for each declaration of a file and shares its ownership with whoever asks
/// KyToolRegistry for it. A tool has two scripts, of which one may be missing, and the name of the engine
/// that runs them; the engine is asked for at each trigger. A script that fails is the engine's to report.
/// Scripts do not see this class. GUI thread only.
class KYSCRIPT_EXPORT KyScriptTool : public KyObsoleteTrigger
{
public:
    ~KyScriptTool() override;

    /// Adds the tools of a file, behind those of other files; a second time adds copies. Both names are in
    /// the encoding of file names. Icons lie in \a inIconDirectory, of which null counts as empty. With a
    /// null \a inFileName nothing happens.
    ///
    /// A file that cannot be read or is not well-formed gives no tools and lines of level 2 in the log. An
    /// icon that is not there gives a line, and the tool is made all the same.
    static void loadTools(const char* inFileName, const char* inIconDirectory);

    /// Lets go of all tools. Those that somebody else still holds live on.
    static void clearTools();

    /// Runs the OnUnset script when \a inFlag is false and the tool is not activatable, else the OnSet
    /// script, in a function scope of its own. Always true, whatever becomes of the script; the viewer is not
    /// used.
    bool process(KyBaseViewer* inViewer, bool inFlag) override;

    /// With `Enabled="whensupported"` true for every viewer, also without one; else as KyTool decides.
    bool supportsViewer(const KyBaseViewer* inViewer) const override;

protected:
    /// The key is Latin-1.
    KyScriptTool(const char* inKey, const QString& inEngineName);

private:
    struct Private;

    static std::vector<std::shared_ptr<KyScriptTool>>& tools();
    static void loadTool(const QDomElement& inElement, const QString& inEngineName, const char* inFileName,
                         const QString& inIconDirectory);
    void setViewerTest(const QString& inEnabled);

    const std::unique_ptr<Private> d;
};
