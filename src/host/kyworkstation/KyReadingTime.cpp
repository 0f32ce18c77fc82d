#include "KyReadingTime.h"

#include <common/KyImageViewer.h>
#include <kybase/KyStudyMetrics.h>
#include <kybase/KyViewerManager.h>

#include <QtWidgets/QWidget>

#include <algorithm>
#include <chrono>

namespace {

/// Longer turns are those of a machine that was asleep or a program that was stuck.
constexpr qint64 LongestTurn = 5000; // ms

} // namespace

KyReadingTime::KyReadingTime(QWidget& inWindow)
    : QObject(&inWindow)
    , mWindow(inWindow)
{
    mSinceLast.start();
    startTimer(std::chrono::seconds(1));
}

void KyReadingTime::timerEvent(QTimerEvent*)
{
    const qint64 elapsed = std::min(mSinceLast.restart(), LongestTurn);
    const auto* manager = KyViewerManager::getInstance();
    const auto* viewer = manager ? dynamic_cast<const KyImageViewer*>(manager->activeViewer()) : nullptr;
    KyStudyMetrics* metrics = KyStudyMetrics::instance();
    const auto layers = viewer ? viewer->layers() : std::vector<KyViewerLayer>();
    if (metrics && !layers.empty() && mWindow.isActiveWindow())
        metrics->addTimeSpent(QString::fromStdString(layers.front().study->studyInstanceUid()),
                              float(elapsed) / 1000);
}
