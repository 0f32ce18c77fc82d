#include "JxReport.h"

namespace {

JxReport* sInstance = nullptr;

} // namespace

JxReport::JxReport()
{
    sInstance = this;
}

JxReport::~JxReport()
{
    if (sInstance == this)
        sInstance = nullptr;
}

JxReport* JxReport::instance()
{
    return sInstance;
}

void JxReport::forget(const Ovg::OvReportEditor* inEditor)
{
    if (mActive == inEditor)
        mActive = nullptr;
}
