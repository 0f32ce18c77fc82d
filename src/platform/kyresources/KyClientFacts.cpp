#include "KyClientFacts.h"

namespace {

const KyClientFacts* theFacts = nullptr;

} // namespace

KyClientFacts::KyClientFacts()
{
    theFacts = this;
}

KyClientFacts::~KyClientFacts()
{
    if (theFacts == this)
        theFacts = nullptr;
}

const KyClientFacts* KyClientFacts::instance()
{
    return theFacts;
}
