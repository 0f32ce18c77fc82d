#pragma once

#include "KyToolDecorations.h"

#include <memory>

/// The application as the platform's libraries see it.
///
/// Somebody's object: construction makes it the one that instance() finds, destruction ends that. GUI thread
/// only.
class KyApplication
{
public:
    /// With a null \a inDecorations the application has no texts and icons for tools.
    explicit KyApplication(
        std::unique_ptr<KyToolDecorations> inDecorations = std::make_unique<KyToolDecorations>());
    virtual ~KyApplication();
    KyApplication(const KyApplication&) = delete;
    KyApplication& operator=(const KyApplication&) = delete;

    /// Null when nobody has made one.
    static KyApplication* instance();

    /// What tools look like; the application owns it. May be null.
    virtual KyToolDecorations* toolDecorations() const { return mToolDecorations.get(); }

private:
    const std::unique_ptr<KyToolDecorations> mToolDecorations;
};
