#include "KyRunHints.h"

#include <common/KyViewerLayout.h>
#include <rnlib/RnLogFile.h>

KyRunHints::KyRunHints(KyViewerLayout& inLayout)
    : mLayout(inLayout)
{
    connect(&inLayout, &KyViewerLayout::layoutChanged, this, &KyRunHints::follow);
    follow();
}

void KyRunHints::follow()
{
    for (int place = 0; place < mLayout.count(); ++place)
        connect(mLayout.viewer(place)->contextToolBar(), &KyContextToolBar::displayHintChanged, this,
                &KyRunHints::tell, Qt::UniqueConnection);
}

void KyRunHints::tell(const QString& inHint)
{
    for (int place = 0; place < mLayout.count(); ++place) {
        if (mLayout.viewer(place)->contextToolBar() == sender())
            getTheLogInstance().tracef(1, "Viewers", "Hint in viewer %d: %s", place + 1,
                                       inHint.toUtf8().constData());
    }
}
