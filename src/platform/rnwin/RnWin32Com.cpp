#include "RnWin32Com.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <oleauto.h>

#include <cstring>

namespace {

LPCOLESTR wide(const std::u16string& inText)
{
    return reinterpret_cast<LPCOLESTR>(inText.c_str());
}

/// The arguments of a call as the system has them, in the order in which they come.
class Variants
{
public:
    explicit Variants(const std::vector<RnInvocation::Value>& inValues);
    ~Variants()
    {
        for (VARIANT& variant : mVariants)
            VariantClear(&variant);
    }
    Variants(const Variants&) = delete;
    Variants& operator=(const Variants&) = delete;

    VARIANT* data() { return mVariants.empty() ? nullptr : mVariants.data(); }
    UINT size() const { return UINT(mVariants.size()); }

private:
    std::vector<VARIANT> mVariants;
};

class DispatchObject final : public RnDispatch
{
public:
    /// Takes the reference over.
    explicit DispatchObject(IDispatch* inObject)
        : mObject(inObject)
    {}

    IDispatch* object() const { return mObject; }

    void release() override
    {
        mObject->Release();
        delete this;
    }
    RnComResult idOfName(const std::u16string& inName, std::uint32_t inLocale, std::int32_t& outId) override;
    RnComResult invoke(const RnInvocation& inCall, RnDispatch** outResult) override;

private:
    ~DispatchObject() = default;

    IDispatch* const mObject;
};

class UnknownObject final : public RnUnknown
{
public:
    /// Takes the reference over.
    explicit UnknownObject(IUnknown* inObject)
        : mObject(inObject)
    {}

    void release() override
    {
        mObject->Release();
        delete this;
    }
    RnComResult queryDispatch(RnDispatch*& outDispatch) override;

private:
    ~UnknownObject() = default;

    IUnknown* const mObject;
};

Variants::Variants(const std::vector<RnInvocation::Value>& inValues)
    : mVariants(inValues.size())
{
    for (std::size_t i = 0; i < inValues.size(); ++i) {
        VARIANT& variant = mVariants[i];
        VariantInit(&variant);
        if (const auto* number = std::get_if<std::int32_t>(&inValues[i])) {
            V_VT(&variant) = VT_I4;
            V_I4(&variant) = *number;
        } else if (const auto* text = std::get_if<std::u16string>(&inValues[i])) {
            V_VT(&variant) = VT_BSTR;
            V_BSTR(&variant) = SysAllocString(wide(*text));
        } else if (const auto* object = std::get_if<RnDispatch*>(&inValues[i]); object && *object) {
            V_VT(&variant) = VT_DISPATCH;
            V_DISPATCH(&variant) = static_cast<DispatchObject*>(*object)->object();
            V_DISPATCH(&variant)->AddRef();
        }
    }
}

RnComResult DispatchObject::idOfName(const std::u16string& inName, std::uint32_t inLocale,
                                     std::int32_t& outId)
{
    BSTR name = SysAllocString(wide(inName));
    DISPID id = DISPID_UNKNOWN;
    const HRESULT result = mObject->GetIDsOfNames(IID_NULL, &name, 1, inLocale, &id);
    SysFreeString(name);
    outId = std::int32_t(id);
    return result;
}

/// The texts of an EXCEPINFO are the caller's.
void freeTexts(EXCEPINFO& ioException)
{
    SysFreeString(ioException.bstrSource);
    SysFreeString(ioException.bstrDescription);
    SysFreeString(ioException.bstrHelpFile);
}

RnComResult DispatchObject::invoke(const RnInvocation& inCall, RnDispatch** outResult)
{
    Variants arguments(inCall.arguments);
    std::vector<DISPID> named(inCall.namedArguments.begin(), inCall.namedArguments.end());
    DISPPARAMS parameters = {arguments.data(), named.empty() ? nullptr : named.data(), arguments.size(),
                             UINT(named.size())};
    VARIANT answer;
    VariantInit(&answer);
    EXCEPINFO exception = {};
    UINT wrongArgument = UINT(-1);
    const HRESULT result = mObject->Invoke(
        inCall.id, IID_NULL, inCall.locale, inCall.flags, &parameters, outResult ? &answer : nullptr,
        inCall.wantsException ? &exception : nullptr, inCall.wantsException ? &wrongArgument : nullptr);
    freeTexts(exception);
    if (outResult) {
        const bool isObject = result >= 0 && V_VT(&answer) == VT_DISPATCH && V_DISPATCH(&answer);
        *outResult = isObject ? new DispatchObject(V_DISPATCH(&answer)) : nullptr;
        if (!isObject)
            VariantClear(&answer);
    }
    return result;
}

RnComResult UnknownObject::queryDispatch(RnDispatch*& outDispatch)
{
    void* object = nullptr;
    const HRESULT result = mObject->QueryInterface(IID_IDispatch, &object);
    outDispatch = result >= 0 && object ? new DispatchObject(static_cast<IDispatch*>(object)) : nullptr;
    return result;
}

} // namespace

RnComResult RnWin32Com::initialize()
{
    return CoInitialize(nullptr);
}

void RnWin32Com::uninitialize()
{
    CoUninitialize();
}

RnComResult RnWin32Com::classIdOf(const std::u16string& inProgramId, RnClassId& outId)
{
    static_assert(sizeof(CLSID) == sizeof(outId.bytes));
    CLSID id = {};
    const HRESULT result = CLSIDFromProgID(wide(inProgramId), &id);
    std::memcpy(outId.bytes, &id, sizeof id);
    return result;
}

RnUnknown* RnWin32Com::activeObject(const RnClassId& inId)
{
    CLSID id = {};
    std::memcpy(&id, inId.bytes, sizeof id);
    IUnknown* object = nullptr;
    GetActiveObject(id, nullptr, &object);
    return object ? new UnknownObject(object) : nullptr;
}
