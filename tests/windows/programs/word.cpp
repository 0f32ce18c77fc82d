// A stand-in for a word processor: an automation server "Word.Application" in the table of running objects,
// with a document, a selection and its range. It ends with its standard input.

#include "Lines.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

namespace {

enum class Kind
{
    Application,
    Document,
    Selection,
    Range,
};

constexpr DISPID ActiveDocument = 3;
constexpr DISPID Selection = 5;
constexpr DISPID Range = 400;
constexpr DISPID Text = 0;
constexpr DISPID MoveStart = 111;

std::mutex sMutex;
std::u16string sText;
std::size_t sStart = 0;
std::size_t sEnd = 0;
bool sHasDocument = true;
std::string sFailing; ///< The name whose call fails.
std::vector<std::string> sCalls;
std::atomic<int> sObjects{0};

struct Name
{
    Kind kind;
    const char* name;
    DISPID id;
};
constexpr Name sNames[] = {{Kind::Application, "ActiveDocument", ActiveDocument},
                           {Kind::Application, "Selection", Selection},
                           {Kind::Selection, "Range", Range},
                           {Kind::Selection, "MoveStart", MoveStart},
                           {Kind::Range, "Text", Text},
                           {Kind::Range, "MoveStart", MoveStart}};

class Object final : public IDispatch
{
public:
    explicit Object(Kind inKind)
        : mKind(inKind)
    {
        ++sObjects;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID inId, void** outObject) override
    {
        const bool isKnown = IsEqualIID(inId, IID_IUnknown) || IsEqualIID(inId, IID_IDispatch);
        *outObject = isKnown ? static_cast<IDispatch*>(this) : nullptr;
        if (isKnown)
            AddRef();
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ULONG(++mReferences); }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const long left = --mReferences;
        if (left == 0) {
            --sObjects;
            delete this;
        }
        return ULONG(left);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* outCount) override
    {
        *outCount = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* inNames, UINT inCount, LCID inLocale,
                                            DISPID* outIds) override
    {
        const std::u16string wide(reinterpret_cast<const char16_t*>(inNames[0]));
        const std::string name(wide.begin(), wide.end());
        const std::lock_guard lock(sMutex);
        sCalls.push_back("id:" + name + ":" + std::to_string(inCount) + ":" + std::to_string(inLocale));
        for (const Name& known : sNames) {
            if (known.kind == mKind && known.name == name && sFailing != "id:" + name) {
                *outIds = known.id;
                return S_OK;
            }
        }
        *outIds = DISPID_UNKNOWN;
        return DISP_E_UNKNOWNNAME;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID inId, REFIID, LCID inLocale, WORD inFlags,
                                     DISPPARAMS* inParameters, VARIANT* outResult, EXCEPINFO*, UINT*) override
    {
        const std::lock_guard lock(sMutex);
        const std::string call = std::to_string(inId) + ":" + std::to_string(inFlags) + ":" +
                                 std::to_string(inLocale) + ":" + std::to_string(inParameters->cArgs) + ":" +
                                 std::to_string(inParameters->cNamedArgs);
        sCalls.push_back(call);
        if (sFailing == std::to_string(inId))
            return E_FAIL;
        if (inFlags & DISPATCH_PROPERTYGET)
            return get(inId, outResult);
        if (mKind == Kind::Range && inId == Text && inFlags == DISPATCH_PROPERTYPUT)
            return put(*inParameters);
        if (mKind == Kind::Selection && inId == MoveStart && inFlags == DISPATCH_METHOD)
            return move(*inParameters);
        return DISP_E_MEMBERNOTFOUND;
    }

private:
    ~Object() = default;

    HRESULT get(DISPID inId, VARIANT* outResult) const
    {
        if (inId == ActiveDocument && !sHasDocument)
            return E_FAIL;
        const Kind kind = inId == ActiveDocument ? Kind::Document
                          : inId == Range        ? Kind::Range
                                                 : Kind::Selection;
        VariantInit(outResult);
        V_VT(outResult) = VT_DISPATCH;
        V_DISPATCH(outResult) = new Object(kind);
        return S_OK;
    }

    static HRESULT put(const DISPPARAMS& inParameters)
    {
        const VARIANT& value = inParameters.rgvarg[0];
        if (inParameters.cArgs != 1 || inParameters.cNamedArgs != 1 ||
            inParameters.rgdispidNamedArgs[0] != DISPID_PROPERTYPUT || V_VT(&value) != VT_BSTR)
            return DISP_E_TYPEMISMATCH;
        const std::u16string text(reinterpret_cast<const char16_t*>(V_BSTR(&value)),
                                  SysStringLen(V_BSTR(&value)));
        sText.replace(sStart, sEnd - sStart, text);
        sEnd = sStart + text.size();
        return S_OK;
    }

    /// Unit 1 is a character; what comes last stands first.
    static HRESULT move(const DISPPARAMS& inParameters)
    {
        if (inParameters.cArgs != 2 || V_VT(&inParameters.rgvarg[0]) != VT_I4 ||
            V_VT(&inParameters.rgvarg[1]) != VT_I4 || V_I4(&inParameters.rgvarg[1]) != 1)
            return DISP_E_TYPEMISMATCH;
        sStart = std::min(sStart + std::size_t(V_I4(&inParameters.rgvarg[0])), sText.size());
        sEnd = std::max(sStart, sEnd);
        return S_OK;
    }

    const Kind mKind;
    std::atomic<long> mReferences{1};
};

std::string carryOut(const std::vector<std::string>& inWords)
{
    const std::lock_guard lock(sMutex);
    const std::string& order = inWords[0];
    if (order == "content")
        return Lines::wideToHex(sText);
    if (order == "selection")
        return std::to_string(sStart) + " " + std::to_string(sEnd);
    if (order == "objects")
        return std::to_string(sObjects.load());
    if (order == "set") {
        sText = Lines::wideFromHex(inWords[1]);
        sStart = std::size_t(std::stoul(inWords[2]));
        sEnd = std::size_t(std::stoul(inWords[3]));
        sFailing.clear();
        sCalls.clear();
    } else if (order == "document") {
        sHasDocument = inWords[1] == "1";
    } else if (order == "fail") {
        sFailing = inWords[1];
    } else if (order == "calls") {
        std::string all;
        for (const std::string& call : sCalls)
            all += call + " ";
        return all;
    }
    return "ok";
}

} // namespace

int main()
{
    CoInitialize(nullptr);
    CLSID id = {};
    DWORD cookie = 0;
    if (CLSIDFromProgID(reinterpret_cast<LPCOLESTR>(u"Word.Application"), &id) < 0 ||
        RegisterActiveObject(new Object(Kind::Application), id, ACTIVEOBJECT_STRONG, &cookie) < 0)
    {
        Lines::say("not registered");
        return 1;
    }
    const DWORD mainThread = GetCurrentThreadId();
    std::thread reader([&] {
        for (std::vector<std::string> words; Lines::read(words);)
            Lines::say(carryOut(words));
        PostThreadMessageW(mainThread, WM_QUIT, 0, 0);
    });
    Lines::say("ready");
    for (MSG message; GetMessageW(&message, nullptr, 0, 0) > 0;)
        DispatchMessageW(&message);
    RevokeActiveObject(cookie, nullptr);
    reader.join();
    ExitProcess(0);
}
