#include "RnResult.h"

RnResult RnResult::failure(RnString inText)
{
    RnResult result;
    result.mOk = false;
    result.mText = std::move(inText);
    return result;
}
