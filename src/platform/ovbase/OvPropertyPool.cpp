#include "OvPropertyPool.h"

#include <rnlib/RnContract.h>

#include <algorithm>

namespace {

OvPropertyPool* sInstance = nullptr;

// Both are reached while static objects are built, so they are made on first use.
std::vector<OvPropertyPool::RegisterFunction>& registerFunctions()
{
    static std::vector<OvPropertyPool::RegisterFunction> sFunctions;
    return sFunctions;
}

std::function<bool()>& clientQuestion()
{
    static std::function<bool()> sQuestion;
    return sQuestion;
}

bool isIdCharacter(char inCharacter)
{
    const auto code = static_cast<unsigned char>(inCharacter);
    return code >= 0x20 && (code < 0x7f || code >= 0xa0) && inCharacter != '?';
}

} // namespace

OvPropertyPool::OvPropertyPool()
{
    sInstance = this;
    // By number: a callback may register another one, which then runs for this pool at once.
    const std::size_t count = registerFunctions().size();
    for (std::size_t i = 0; i < count; ++i)
        run(registerFunctions()[i]);
}

OvPropertyPool::~OvPropertyPool()
{
    if (sInstance == this)
        sInstance = nullptr;
}

void OvPropertyPool::run(RegisterFunction inFunction)
{
    try {
        inFunction(*this);
    } catch (...) {
        ovLogException("OvPropertyPool", "a registration of properties");
    }
}

OvPropertyPool* OvPropertyPool::instance()
{
    return sInstance;
}

void OvPropertyPool::addRegisterProperties(RegisterFunction inFunction)
{
    if (!inFunction)
        return;
    registerFunctions().push_back(inFunction);
    if (sInstance)
        sInstance->run(inFunction);
}

void OvPropertyPool::setClientQuestion(std::function<bool()> inQuestion)
{
    clientQuestion() = std::move(inQuestion);
}

bool OvPropertyPool::validPropertyName(const std::string& inId)
{
    return inId.size() <= MaxIdLength && inId.find_first_not_of('.') != std::string::npos &&
           std::all_of(inId.begin(), inId.end(), isIdCharacter);
}

OvVariant* OvPropertyPool::find(std::string_view inId) const
{
    const auto found = mVariants.find(inId);
    return found == mVariants.end() ? nullptr : found->second.get();
}

OvVariant* OvPropertyPool::variant(std::string_view inId) const
{
    return find(inId);
}

OvVariant* OvPropertyPool::presentVariant(const std::string& inId, const std::type_info& inType,
                                          const OvSerializer* inSerializer) const
{
    if (clientQuestion() && !clientQuestion()())
        dbc_report("0", "This method should be used on the client only. "
                        "Call OvPropertyPool::propertyValue() instead");
    OvVariant* present = find(inId);
    if (!present)
        return nullptr;
    if (present->type() != inType)
        dbc_report("v->isType<t_type>()", nullptr);
    if (mIsAutoCommitEnabled && inSerializer != &mDefaultSerializer && inSerializer != present->serializer())
        dbc_report("ifThen(isAutoCommitEnabled(), "
                   "serializer == instance().defaultSerializer() || serializer == v->serializer())",
                   nullptr);
    return present;
}

bool OvPropertyPool::addVariant(OvVariant* inVariant, OvSerializer* inSerializer)
{
    std::unique_ptr<OvVariant> owned(inVariant);
    if (!dbc_holds(inVariant != nullptr))
        return false;
    const std::string& id = inVariant->identifier();
    const bool isValid = validPropertyName(id);
    if (!isValid || find(id)) {
        dbc_report(isValid ? "variant(id) == nullptr" : "validPropertyName(id)",
                   QString::fromLatin1(id.c_str()).toUtf8().constData());
        return false;
    }
    inVariant->mPool = this;
    inVariant->mSerializer = inSerializer;
    inVariant->mDefault = inVariant->clone();
    mVariants.emplace(id, std::move(owned));
    if (inSerializer)
        inVariant->restore();
    mAdditions.tell(inVariant);
    return true;
}

std::vector<OvVariant*> OvPropertyPool::variants() const
{
    std::vector<OvVariant*> all;
    all.reserve(mVariants.size());
    for (const auto& entry : mVariants)
        all.push_back(entry.second.get());
    std::sort(all.begin(), all.end(),
              [](const OvVariant* a, const OvVariant* b) { return a->identifier() < b->identifier(); });
    return all;
}

void OvPropertyPool::setAutoCommitEnabled(bool inOn)
{
    mIsAutoCommitEnabled = inOn;
    if (inOn)
        commit();
}

bool OvPropertyPool::store(OvVariant& ioVariant)
{
    if (mIsAutoCommitEnabled)
        return ioVariant.serializer()->write(ioVariant, mSerializationPriority);
    mPending[{&ioVariant, mSerializationPriority}] = ioVariant.clone();
    return true;
}

bool OvPropertyPool::commit()
{
    std::erase_if(mPending, [](const auto& entry) {
        const auto& [variant, priority] = entry.first;
        return variant->serializer()->write(*entry.second, priority);
    });
    return mPending.empty();
}

void OvPropertyPool::forgetPending(OvVariant& ioVariant)
{
    std::erase_if(mPending, [&](const auto& entry) { return entry.first.first == &ioVariant; });
}

void OvPropertyPool::tellChange(const OvVariant& inVariant)
{
    mChanges.tell(&inVariant);
}

void OvPropertyPool::observeAdditions(const QObject* inContext, PropertyFunction inFunction)
{
    mAdditions.add(inContext, std::move(inFunction));
}

void OvPropertyPool::observeChanges(const QObject* inContext, PropertyFunction inFunction)
{
    mChanges.add(inContext, std::move(inFunction));
}
