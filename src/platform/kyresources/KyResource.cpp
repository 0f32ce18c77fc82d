#include "KyResource.h"

#include "KyClientFacts.h"

namespace {

const char* fact(RnString KyClientFacts::*inField)
{
    const KyClientFacts* facts = KyClientFacts::instance();
    return facts ? (facts->*inField).c_str() : "";
}

} // namespace

const char* KyResource::getOrganizationName()
{
    return fact(&KyClientFacts::organizationName);
}

const char* KyResource::getApplicationRegistryName()
{
    return fact(&KyClientFacts::applicationRegistryName);
}

const char* KyResource::getUserName()
{
    return fact(&KyClientFacts::userName);
}

const char* KyResource::getSessionId()
{
    return fact(&KyClientFacts::sessionId);
}

RnString KyResource::getWebServiceHostExternal()
{
    return fact(&KyClientFacts::webServiceHostExternal);
}
