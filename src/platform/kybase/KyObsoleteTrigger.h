#pragma once

#include "KyTool.h"
#include "KyToolAspect.h"

/// A tool whose class is told whether it is activatable, instead of deciding it; for tools that come from a
/// configuration. Newer tools derive from KyTool.
class KyObsoleteTrigger : public KyToolAspect::UnDeletable<KyTool>
{
public:
    explicit KyObsoleteTrigger(const char* inDecorationKey);

    bool isActivatable() const override { return mIsActivatable; }
    /// An active tool that is no longer activatable becomes inactive. False at first.
    void setActivatable(bool inActivatable);

private:
    bool mIsActivatable = false;
};
