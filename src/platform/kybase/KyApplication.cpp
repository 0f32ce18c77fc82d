#include "KyApplication.h"

namespace {

KyApplication* sInstance = nullptr;

} // namespace

KyApplication::KyApplication(std::unique_ptr<KyToolDecorations> inDecorations)
    : mToolDecorations(std::move(inDecorations))
{
    sInstance = this;
}

KyApplication::~KyApplication()
{
    if (sInstance == this)
        sInstance = nullptr;
}

KyApplication* KyApplication::instance()
{
    return sInstance;
}
