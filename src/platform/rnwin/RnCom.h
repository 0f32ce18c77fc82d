#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

class RnDispatch;

/// An HRESULT: negative means failure.
using RnComResult = std::int32_t;

/// The id of a class: 16 bytes in the order of memory.
struct RnClassId
{
    unsigned char bytes[16] = {};
};

/// One call of IDispatch::Invoke.
struct RnInvocation
{
    /// VT_EMPTY, VT_I4, VT_BSTR and VT_DISPATCH.
    using Value = std::variant<std::monostate, std::int32_t, std::u16string, RnDispatch*>;

    static constexpr std::uint16_t Method = 1;      ///< DISPATCH_METHOD
    static constexpr std::uint16_t PropertyGet = 2; ///< DISPATCH_PROPERTYGET
    static constexpr std::uint16_t PropertyPut = 4; ///< DISPATCH_PROPERTYPUT
    static constexpr std::int32_t PutId = -3;       ///< DISPID_PROPERTYPUT

    std::int32_t id = 0;
    std::uint32_t locale = 0;
    std::uint16_t flags = 0;
    std::vector<Value> arguments; ///< In the order of COM, the last one first.
    std::vector<std::int32_t> namedArguments;
    /// A call of a method gets an EXCEPINFO, and an index of a wrong argument that is -1 beforehand.
    bool wantsException = false;
};

/// Port: an object of another program that answers to names looked up at run time, IDispatch. One reference
/// is its holder's, who ends it with release().
class RnDispatch
{
public:
    virtual void release() = 0;
    /// GetIDsOfNames with IID_NULL and this one name, made as a BSTR and freed straight after.
    virtual RnComResult idOfName(const std::u16string& inName, std::uint32_t inLocale,
                                 std::int32_t& outId) = 0;
    /// Invoke with IID_NULL. With \a outResult the answer goes there: a VT_DISPATCH with a reference for the
    /// caller, anything else as a null one. Texts go as BSTRs that are freed after the call; a BSTR ends at
    /// the first NUL.
    virtual RnComResult invoke(const RnInvocation& inCall, RnDispatch** outResult) = 0;

protected:
    ~RnDispatch() = default;
};

/// Port: an object of which nothing is known yet, IUnknown. One reference is its holder's.
class RnUnknown
{
public:
    virtual void release() = 0;
    /// QueryInterface for IDispatch, which comes with a reference for the caller; null on failure.
    virtual RnComResult queryDispatch(RnDispatch*& outDispatch) = 0;

protected:
    ~RnUnknown() = default;
};

/// Port: COM, as far as a program that is running is driven by it. RnWin32Com, RnSimulatedCom.
///
/// Somebody's object: construction makes it the one that instance() finds, destruction ends that. GUI thread
/// only.
class RnCom
{
public:
    RnCom();
    virtual ~RnCom();
    RnCom(const RnCom&) = delete;
    RnCom& operator=(const RnCom&) = delete;

    /// Null where nobody has made one, as on systems without COM.
    static RnCom* instance();
    /// The COM of this system; null on a system other than Windows.
    static std::unique_ptr<RnCom> ofSystem();

    virtual RnComResult initialize() = 0; ///< CoInitialize(nullptr)
    virtual void uninitialize() = 0;      ///< CoUninitialize
    /// CLSIDFromProgID
    virtual RnComResult classIdOf(const std::u16string& inProgramId, RnClassId& outId) = 0;
    /// GetActiveObject, with a reference for the caller; null when none is running.
    virtual RnUnknown* activeObject(const RnClassId& inId) = 0;
};
