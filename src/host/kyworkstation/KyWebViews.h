#pragma once

#include <QtCore/QString>

#include <memory>

/// Web pages in windows of the workstation, where the plugin "kywebengine" is installed.
///
/// The plugin is looked for beside the program, in "../lib/kyscript", and loaded when the first page is
/// shown. While this lives, BrowserCtrl uses windows unless the user wants the browser's program. Made behind
/// the application object and ended before it, after all windows.
class KyWebViews
{
public:
    /// Pages keep their data in the folder "browser" of \a inProfile; without a profile nowhere.
    explicit KyWebViews(const QString& inProfile);
    ~KyWebViews();

    /// Readies the application for pages. To be called before the application object is made, with the path
    /// under which the program was started; pages are not shown otherwise. Without the plugin it does
    /// nothing, since it takes time: some 60 ms.
    static void prepare(const char* inProgram);

private:
    class Runtime;
    std::unique_ptr<Runtime> mRuntime;
};
