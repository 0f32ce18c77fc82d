#include "OvTokenSource.h"

namespace {

OvTokenSource* sInstance = nullptr;

} // namespace

OvTokenSource::OvTokenSource()
{
    sInstance = this;
}

OvTokenSource::~OvTokenSource()
{
    if (sInstance == this)
        sInstance = nullptr;
}

OvTokenSource* OvTokenSource::instance()
{
    return sInstance;
}

void OvMemoryTokenSource::request(int inType, int inKey, const QString& inUserData, const Answer& inAnswer)
{
    inAnswer(token ? token(inType, inKey, inUserData) : QString());
}

void OvMemoryTokenSource::requestJwt(const QString& inName, const Answer& inAnswer)
{
    inAnswer(jwt ? jwt(inName) : QString());
}
