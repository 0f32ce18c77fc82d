#pragma once

#include <QIcon>

#include <functional>

/// An icon that tells that something is under way: a ring on which a lighter part goes round.
///
/// It turns calmly, once in a little more than a second, and is the same for all targets at any time. It is
/// drawn anew for each size and each resolution, in the text colour of the application's palette.
///
/// Always there, and at rest without a target. GUI thread only, behind a QGuiApplication.
class JxAnimatedProgressIcon
{
public:
    JxAnimatedProgressIcon() = delete;

    /// Calls \a inApply with the present frame, and with each further one, until \a inTarget is taken off
    /// again. A target that is there already only gets the new function. The target only serves as a name,
    /// and must be taken off before it ends; null and a null function are ignored.
    ///
    /// With \a inIsDelayed the first frame comes after half a second: what is over sooner does not flicker.
    static void setIconTo(void* inTarget, std::function<void(const QIcon&)> inApply, bool inIsDelayed);

    /// Ends that; nothing happens for a target that has none. With \a inClears the target first gets the
    /// null icon, once, unless it never had a frame.
    static void removeIconFrom(void* inTarget, bool inClears);

    /// The frame that stands \a inTurn of a whole turn, 0 to 1, behind the first one. A disabled one is
    /// paler.
    static QIcon frame(double inTurn);
};
