#include "KyWebViewRuntime.h"

namespace {

KyWebViewRuntime* sInstance = nullptr;

} // namespace

KyWebViewRuntime::KyWebViewRuntime()
{
    sInstance = this;
}

KyWebViewRuntime::~KyWebViewRuntime()
{
    if (sInstance == this)
        sInstance = nullptr;
}

KyWebViewRuntime* KyWebViewRuntime::instance()
{
    return sInstance;
}
