#include "KyToolUI.h"

#include "KyApplication.h"
#include "KyTool.h"
#include "KyViewerManager.h"

#include <QAction>

namespace {

void decorate(QAction& outAction, const KyTool& inTool)
{
    const char* key = inTool.decorationKey().c_str();
    const KyApplication* application = KyApplication::instance();
    KyToolDecorations* decorations = application ? application->toolDecorations() : nullptr;
    if (!decorations) {
        outAction.setText(QString::fromLatin1(key));
        return;
    }
    const QString label = decorations->label(key, inTool.isActive());
    outAction.setIcon(decorations->icon(key));
    outAction.setToolTip(decorations->toolTip(key));
    outAction.setText(label);
    outAction.setIconText(label);
}

} // namespace

KyToolUI::KyToolUI(const std::shared_ptr<KyTool>& inTool)
    : mTool(inTool)
    , mListedIn(inTool.get())
{
    if (mListedIn)
        mListedIn->addUI(this);
}

KyToolUI::~KyToolUI()
{
    if (mListedIn)
        mListedIn->removeUI(this);
}

void KyToolUI::refresh()
{
    QAction* const shown = action();
    const auto present = tool();
    if (!shown || !present)
        return;
    const KyViewerManager* manager = KyViewerManager::getInstance();
    shown->setCheckable(present->isActivatable());
    shown->setChecked(present->isActive());
    decorate(*shown, *present);
    shown->setEnabled(present->supportsViewer(manager ? manager->activeViewer() : nullptr));
}

void KyToolUI::toolEnded()
{
    mListedIn = nullptr;
    if (QAction* shown = action())
        shown->setEnabled(false);
}
