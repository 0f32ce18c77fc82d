#include "KyNotification.h"

namespace {

template <class T>
bool isEmptyOr(const T& inWanted, const T& inSent)
{
    return inWanted == T() || inWanted == inSent;
}

} // namespace

bool KyNotification::covers(const KyNotification& inSent) const
{
    return code == inSent.code && isEmptyOr(firstWord, inSent.firstWord) &&
           isEmptyOr(secondWord, inSent.secondWord) && isEmptyOr(property, inSent.property) &&
           (inSent.session == OvSessionContextID() || isEmptyOr(session, inSent.session));
}
