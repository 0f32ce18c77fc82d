#include "KySessionContext.h"

#include <algorithm>

namespace {

int sSessions = 0;

} // namespace

KySessionComponent::~KySessionComponent() = default;

KySessionContext::KySessionContext()
    : mId{++sSessions}
{
    currentInstance() = std::shared_ptr<KySessionContext>(std::shared_ptr<void>(), this);
}

KySessionContext::~KySessionContext()
{
    if (currentInstance().get() == this)
        currentInstance().reset();
    while (!mComponents.empty())
        mComponents.pop_back();
}

/// Never destroyed, so that a session that ends late can still leave it.
std::shared_ptr<KySessionContext>& KySessionContext::currentInstance()
{
    static auto& current = *new std::shared_ptr<KySessionContext>;
    return current;
}

OvSessionContextID KySessionContext::currentInstanceID()
{
    return currentInstance() ? currentInstance()->id() : OvSessionContextID();
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
