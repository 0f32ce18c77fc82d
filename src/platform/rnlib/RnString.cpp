#include "RnString.h"

RnString& RnString::operator+=(const RnString& inOther)
{
    mText += inOther.mText;
    return *this;
}
