#include "KyContextToolBar.h"

void KyContextToolBar::setDisplayHint(const QString& inText)
{
    if (mDisplayHint == inText)
        return;
    mDisplayHint = inText;
    emit displayHintChanged(mDisplayHint);
}
