#pragma once

#include <kybase/KyObsoleteTrigger.h>

#include <QList>

#include <functional>
#include <utility>

/// A tool that keeps what it was asked to do.
class TestTool : public KyObsoleteTrigger
{
public:
    explicit TestTool(const char* inKey)
        : KyObsoleteTrigger(inKey)
    {}
    static std::shared_ptr<TestTool> make(const char* inKey) { return std::make_shared<TestTool>(inKey); }

    bool supportsViewer(const KyBaseViewer*) const override { return supports; }

    bool process(KyBaseViewer* inViewer, bool inFlag) override
    {
        runs.append({inViewer, inFlag});
        if (work)
            work();
        return result;
    }

    QList<bool> flags() const
    {
        QList<bool> all;
        for (const auto& run : runs)
            all.append(run.second);
        return all;
    }

    bool supports = true;
    bool result = true;
    std::function<void()> work;
    QList<std::pair<KyBaseViewer*, bool>> runs;
};
