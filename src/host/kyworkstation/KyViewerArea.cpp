#include "KyViewerArea.h"

#include "KyImageViewerWidget.h"
#include "KyStudySession.h"

#include <kybase/KyViewerManager.h>

#include <QtWidgets/QApplication>
#include <QtWidgets/QGridLayout>

#include <utility>

namespace {

constexpr int Gap = 2; ///< Between viewers, in pixels.

} // namespace

KyViewerArea::KyViewerArea(QWidget* inParent)
    : QWidget(inParent)
    , mLayout(KySeriesVolume::Reading::InBackground)
    , mGrid(new QGridLayout(this))
{
    setObjectName(QStringLiteral("viewers"));
    mGrid->setContentsMargins(0, 0, 0, 0);
    mGrid->setSpacing(Gap);
    connect(&mLayout, &KyViewerLayout::layoutChanged, this, &KyViewerArea::rebuild);
    if (auto* manager = KyViewerManager::getInstance())
        connect(manager, &KyViewerManager::activeViewerChanged, this, &KyViewerArea::showActive);
    rebuild();
}

/// The widgets go first, since they hold viewers of the layout, and nobody is to hear of that.
KyViewerArea::~KyViewerArea()
{
    if (auto* manager = KyViewerManager::getInstance())
        manager->disconnect(this);
    qDeleteAll(mWidgets);
}

void KyViewerArea::rebuild()
{
    const QWidget* focused = QApplication::focusWidget();
    const bool hadFocus = focused && isAncestorOf(focused);
    // One of them may be the one whose event has led here.
    for (KyImageViewerWidget* widget : std::exchange(mWidgets, {})) {
        mGrid->removeWidget(widget);
        widget->retire();
    }
    for (int place = 0; place < mLayout.count(); ++place) {
        auto* widget = new KyImageViewerWidget(*mLayout.viewer(place), this);
        connect(widget, &KyImageViewerWidget::menuWanted, this, &KyViewerArea::menuWanted);
        connect(widget, &KyImageViewerWidget::aloneWanted, this, &KyViewerArea::toggleAlone,
                Qt::QueuedConnection);
        connect(widget, &KyImageViewerWidget::seriesDropped, this, &KyViewerArea::open);
        mGrid->addWidget(widget, place / mLayout.columns(), place % mLayout.columns());
        widget->show(); // At once, for the focus; the layout would do it later.
        mWidgets.append(widget);
    }
    for (int line = 0; line < 2; ++line) {
        mGrid->setRowStretch(line, line < mLayout.rows() ? 1 : 0);
        mGrid->setColumnStretch(line, line < mLayout.columns() ? 1 : 0);
    }
    showActive();
    for (KyImageViewerWidget* widget : std::as_const(mWidgets)) {
        if (hadFocus && &widget->viewer() == mLayout.activeViewer())
            widget->setFocus();
    }
}

KyImageViewerWidget* KyViewerArea::widgetAt(int inPlace) const
{
    return mWidgets.value(inPlace);
}

void KyViewerArea::showActive()
{
    const KyImageViewer* active = mLayout.activeViewer();
    for (KyImageViewerWidget* widget : std::as_const(mWidgets))
        widget->setActive(&widget->viewer() == active && mWidgets.size() > 1);
}

void KyViewerArea::open(const KyViewerLayer& inLayer, bool inFuse)
{
    KyImageViewer* active = mLayout.activeViewer();
    if (inFuse && active && !active->isEmpty())
        active->fuse(inLayer);
    else
        mLayout.open(inLayer);
}

void KyViewerArea::followSession()
{
    std::vector<std::shared_ptr<Ovg::DicomDirectoryEntry>> studies = KyStudySession::primary();
    const auto& additional = KyStudySession::additional();
    studies.insert(studies.end(), additional.begin(), additional.end());
    mLayout.keepOnly(studies);
    bool isEmpty = true;
    for (int place = 0; place < mLayout.count(); ++place)
        isEmpty = isEmpty && mLayout.viewer(place)->isEmpty();
    if (isEmpty)
        mLayout.fill(KyStudySession::primary());
}

void KyViewerArea::toggleAlone()
{
    if (mLayout.count() > 1) {
        mLayoutBeforeAlone = mLayout.layout();
        mLayout.setLayout(QStringLiteral("1x1"));
    } else if (!mLayoutBeforeAlone.isEmpty()) {
        mLayout.setLayout(mLayoutBeforeAlone);
    }
}
