#include "JxAnimatedProgressIcon.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds Turn = 1200ms;
constexpr std::chrono::milliseconds FrameInterval = 50ms; ///< 24 frames for a turn.
constexpr std::chrono::milliseconds Delay = 500ms;

constexpr int FullCircle = 360 * 16; ///< In the units of QPainter::drawArc.
constexpr int ArcLength = 100 * 16;

/// Draws one frame in any size, so that it is sharp in each.
class RingEngine final : public QIconEngine
{
public:
    explicit RingEngine(double inTurn)
        : mTurn(inTurn)
    {}

    void paint(QPainter* ioPainter, const QRect& inRect, QIcon::Mode inMode, QIcon::State) override
    {
        const auto group = inMode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const QColor color = QGuiApplication::palette().color(group, QPalette::WindowText);
        QColor pale = color;
        pale.setAlphaF(0.2f);

        const qreal extent = std::min(inRect.width(), inRect.height());
        const qreal width = extent / 8;
        QRectF ring(0, 0, extent - 2 * width, extent - 2 * width);
        ring.moveCenter(QRectF(inRect).center());
        const int start = 90 * 16 - int(std::lround(mTurn * FullCircle));

        ioPainter->save();
        ioPainter->setRenderHint(QPainter::Antialiasing);
        ioPainter->setPen(QPen(pale, width));
        ioPainter->drawEllipse(ring);
        ioPainter->setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap));
        ioPainter->drawArc(ring, start, -ArcLength);
        ioPainter->restore();
    }

    QPixmap pixmap(const QSize& inSize, QIcon::Mode inMode, QIcon::State inState) override
    {
        QPixmap pixmap(inSize);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), inSize), inMode, inState);
        return pixmap;
    }

    QIconEngine* clone() const override { return new RingEngine(*this); }

private:
    const double mTurn;
};

struct Target
{
    void* name;
    std::function<void(const QIcon&)> apply;
    std::chrono::milliseconds start;
    bool hasFrame = false;
};

/// The targets and the clock that all of them share. It is there while there are targets.
class Animation final
{
public:
    Animation()
    {
        mClock.start();
        mTimer.setInterval(FrameInterval);
        QObject::connect(&mTimer, &QTimer::timeout, &mTimer, [this] { showAll(); });
        mTimer.start();
    }

    bool isEmpty() const { return mTargets.empty(); }

    void add(void* inName, std::function<void(const QIcon&)> inApply, std::chrono::milliseconds inDelay)
    {
        Target* target = find(inName);
        if (target)
            target->apply = std::move(inApply);
        else
            target = &mTargets.emplace_back(Target{inName, std::move(inApply), now() + inDelay});
        show(*target);
    }

    Target take(void* inName)
    {
        Target taken{nullptr, {}, {}};
        if (Target* target = find(inName)) {
            taken = std::move(*target);
            mTargets.erase(mTargets.begin() + (target - mTargets.data()));
        }
        return taken;
    }

private:
    std::chrono::milliseconds now() const { return std::chrono::milliseconds(mClock.elapsed()); }

    Target* find(const void* inName)
    {
        const auto found = std::find_if(mTargets.begin(), mTargets.end(),
                                        [&](const Target& target) { return target.name == inName; });
        return found == mTargets.end() ? nullptr : &*found;
    }

    void show(Target& ioTarget)
    {
        if (now() < ioTarget.start)
            return;
        ioTarget.hasFrame = true;
        const auto frame = now() / FrameInterval % (Turn / FrameInterval);
        // A copy, since the target may take itself off, or others.
        const auto apply = ioTarget.apply;
        apply(JxAnimatedProgressIcon::frame(double(frame) / double(Turn / FrameInterval)));
    }

    void showAll();

    std::vector<Target> mTargets;
    QElapsedTimer mClock;
    QTimer mTimer;
};

/// Not ended with the process, when there is no event loop for its timer.
Animation* sAnimation = nullptr;

void Animation::showAll()
{
    std::vector<void*> names;
    for (const Target& target : mTargets)
        names.push_back(target.name);
    for (void* const name : names) {
        // The last target takes the animation along.
        Target* const target = sAnimation ? sAnimation->find(name) : nullptr;
        if (target)
            sAnimation->show(*target);
    }
}

} // namespace

void JxAnimatedProgressIcon::setIconTo(void* inTarget, std::function<void(const QIcon&)> inApply,
                                       bool inIsDelayed)
{
    if (!inTarget || !inApply)
        return;
    if (!sAnimation)
        sAnimation = new Animation;
    sAnimation->add(inTarget, std::move(inApply), inIsDelayed ? Delay : 0ms);
}

void JxAnimatedProgressIcon::removeIconFrom(void* inTarget, bool inClears)
{
    if (!sAnimation)
        return;
    const Target target = sAnimation->take(inTarget);
    if (sAnimation->isEmpty())
        delete std::exchange(sAnimation, nullptr);
    if (inClears && target.hasFrame)
        target.apply(QIcon());
}

QIcon JxAnimatedProgressIcon::frame(double inTurn)
{
    return QIcon(new RingEngine(inTurn));
}
