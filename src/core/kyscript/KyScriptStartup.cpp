#include "KyScriptBrowserCtrl.h"
#include "KyScriptRunLog.h"
#include "KyScriptingWindow.h"

namespace {

/// What the library registers when it is loaded, in this order. The registries of named engines and external
/// objects make themselves on first use.
const bool sRegistered = [] {
    KyScriptBrowserCtrl::registerProperties();
    KyScriptRunLog::registerProperties();
    KyScriptingWindow::registerProperties();
    return true;
}();

} // namespace
