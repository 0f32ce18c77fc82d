#pragma once

#include <kybase/KyTool.h>
#include <kybase/KyToolAspect.h>

#include <QtCore/QString>

#include <functional>

/// A tool of the application itself, whose work is a function. It supports every viewer, and none.
class KyCommandTool final : public KyToolAspect::UnDeletable<KyTool>
{
public:
    enum class Kind
    {
        Command,
        Switch ///< Activatable.
    };
    /// Gets the flag of KyTool::process(). False when nothing was done.
    using Work = std::function<bool(bool inFlag)>;

    /// How the tool looks and which key triggers it.
    struct Looks
    {
        QString group;
        QString icon; ///< A name below ":icons/".
        QString label;
        QString toolTip;
        std::string hotKey;
    };

    /// Makes a tool and records its looks.
    static std::shared_ptr<KyCommandTool> make(const char* inKey, const Looks& inLooks, Kind inKind,
                                               Work inWork);

    bool supportsViewer(const KyBaseViewer*) const override { return true; }
    bool process(KyBaseViewer*, bool inFlag) override { return mWork && mWork(inFlag); }
    bool isActivatable() const override { return mKind == Kind::Switch; }

private:
    KyCommandTool(const char* inKey, Kind inKind, Work inWork);

    const Kind mKind;
    const Work mWork;
};
