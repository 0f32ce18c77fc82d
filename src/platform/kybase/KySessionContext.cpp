#include "KySessionContext.h"

#include <algorithm>

namespace {

KySessionContext* sCurrent = nullptr;
int sSessions = 0;

} // namespace

KySessionComponent::~KySessionComponent() = default;

KySessionContext::KySessionContext()
    : mId{++sSessions}
{
    sCurrent = this;
}

KySessionContext::~KySessionContext()
{
    if (sCurrent == this)
        sCurrent = nullptr;
    while (!mComponents.empty())
        mComponents.pop_back();
}

KySessionContext* KySessionContext::currentInstance()
{
    return sCurrent;
}

OvSessionContextID KySessionContext::currentInstanceID()
{
    return sCurrent ? sCurrent->id() : OvSessionContextID();
}

KySessionComponent* KySessionContext::find(std::type_index inType) const
{
    const auto found = std::find_if(mComponents.begin(), mComponents.end(),
                                    [&](const auto& c) { return c.first == inType; });
    return found == mComponents.end() ? nullptr : found->second.get();
}

void KySessionContext::append(std::type_index inType, std::unique_ptr<KySessionComponent> inComponent)
{
    mComponents.emplace_back(inType, std::move(inComponent));
}
