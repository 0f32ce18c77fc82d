#include "KyWebEnginePlugin.h"

#include "KyWebEngineProfile.h"
#include "KyWebEngineView.h"

KyWebView* KyWebEnginePlugin::makeView(const QString& inFolder, QWidget* inParent)
{
    return new KyWebEngineView(KyWebEngineProfile::of(inFolder), inParent);
}
