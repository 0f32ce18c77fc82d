#include "DriverPorts.h"

#include <algorithm>
#include <cstring>

namespace {

std::string hex(std::string_view inBytes)
{
    return inBytes.empty() ? "-"
                           : QByteArray(inBytes.data(), qsizetype(inBytes.size())).toHex().toStdString();
}

std::string bytesOf(const std::string& inHex)
{
    return QByteArray::fromHex(QByteArray::fromStdString(inHex)).toStdString();
}

std::u16string wide(const std::string& inHex)
{
    return WineProgram::fromHex(inHex).toStdU16String();
}

std::string hex(std::u16string_view inText)
{
    return WineProgram::hex(QString::fromUtf16(inText.data(), qsizetype(inText.size())));
}

RnComResult resultOf(const QStringList& inWords)
{
    return inWords.isEmpty() ? RnComResult(0x80004005) : inWords.at(0).toInt();
}

/// An object over there, by its number.
class Object final : public RnUnknown, public RnDispatch
{
public:
    Object(WineProgram& inDriver, const QString& inNumber)
        : mDriver(inDriver)
        , mNumber(inNumber.toStdString())
    {}

    void release() override
    {
        mDriver.ask("release " + mNumber);
        delete this;
    }

    RnComResult queryDispatch(RnDispatch*& outDispatch) override
    {
        const QStringList words = mDriver.words("queryDispatch " + mNumber);
        outDispatch = object(words);
        return resultOf(words);
    }

    RnComResult idOfName(const std::u16string& inName, std::uint32_t inLocale, std::int32_t& outId) override
    {
        const QStringList words =
            mDriver.words("idOfName " + mNumber + " " + hex(inName) + " " + std::to_string(inLocale));
        outId = words.value(1).toInt();
        return resultOf(words);
    }

    RnComResult invoke(const RnInvocation& inCall, RnDispatch** outResult) override
    {
        std::string line = "invoke " + mNumber + " " + std::to_string(inCall.id) + " " +
                           std::to_string(inCall.locale) + " " + std::to_string(inCall.flags) +
                           (inCall.wantsException ? " 1" : " 0") + (outResult ? " 1" : " 0");
        for (const std::int32_t named : inCall.namedArguments)
            line += " named " + std::to_string(named);
        for (const RnInvocation::Value& argument : inCall.arguments) {
            if (const auto* number = std::get_if<std::int32_t>(&argument))
                line += " i " + std::to_string(*number);
            else if (const auto* text = std::get_if<std::u16string>(&argument))
                line += " s " + hex(*text);
        }
        const QStringList words = mDriver.words(line);
        if (outResult)
            *outResult = object(words);
        return resultOf(words);
    }

private:
    ~Object() = default;

    Object* object(const QStringList& inWords) const
    {
        const QString number = inWords.value(1);
        return number.toInt() ? new Object(mDriver, number) : nullptr;
    }

    WineProgram& mDriver;
    const std::string mNumber;
};

} // namespace

void DriverWindows::enumWindows(const std::function<bool(Window)>& inCallback)
{
    for (const QString& word : mDriver.words("enumWindows")) {
        if (!inCallback(word.toULongLong()))
            return;
    }
}

RnWindows::Window DriverWindows::findWindowEx(Window inParent, Window inAfter)
{
    return Window(number("findWindowEx", inParent, inAfter));
}

RnWindows::Window DriverWindows::parent(Window inWindow)
{
    return Window(number("parent", inWindow));
}

bool DriverWindows::isWindow(Window inWindow)
{
    return number("isWindow", inWindow);
}

bool DriverWindows::isWindowVisible(Window inWindow)
{
    return number("isWindowVisible", inWindow);
}

std::u16string DriverWindows::className(Window inWindow, int inCapacity)
{
    return wide(ask("className", inWindow, inCapacity));
}

std::u16string DriverWindows::windowText(Window inWindow, int inCapacity)
{
    return wide(ask("windowText", inWindow, inCapacity));
}

std::uint32_t DriverWindows::processId(Window inWindow)
{
    return std::uint32_t(number("processId", inWindow));
}

RnWindows::Process DriverWindows::openProcess(std::uint32_t inAccess, std::uint32_t inProcessId)
{
    return Process(number("openProcess", inAccess, inProcessId));
}

std::u16string DriverWindows::moduleFileName(Process inProcess, int inCapacity)
{
    return wide(ask("moduleFileName", inProcess, inCapacity));
}

void DriverWindows::closeHandle(Process inProcess)
{
    ask("closeHandle", inProcess);
}

std::u16string DriverWindows::wideText(Window inWindow, int inCapacity)
{
    return wide(ask("wideText", inWindow, inCapacity));
}

std::intptr_t DriverWindows::textLength(Window inWindow)
{
    return number("textLength", inWindow);
}

void DriverWindows::text(Window inWindow, std::size_t inSize, char* outBuffer)
{
    const std::string bytes = bytesOf(ask("text", inWindow, inSize));
    std::memcpy(outBuffer, bytes.data(), std::min(bytes.size(), inSize));
}

RnWindows::Selection DriverWindows::selection(Window inWindow)
{
    const QStringList words = mDriver.words("selection " + std::to_string(inWindow));
    return {words.value(0).toUInt(), words.value(1).toUInt()};
}

void DriverWindows::setSelection(Window inWindow, int inStart, int inEnd)
{
    ask("setSelection", inWindow, inStart, inEnd);
}

void DriverWindows::replaceSelection(Window inWindow, bool inCanUndo, const std::string& inText)
{
    mDriver.ask("replaceSelection " + std::to_string(inWindow) + (inCanUndo ? " 1 " : " 0 ") + hex(inText));
}

std::u16string DriverWindows::fromLocal8Bit(std::string_view inText)
{
    return wide(mDriver.ask("fromLocal8Bit " + hex(inText)));
}

std::string DriverWindows::toLocal8Bit(std::u16string_view inText)
{
    return bytesOf(mDriver.ask("toLocal8Bit " + hex(inText)));
}

RnComResult DriverCom::initialize()
{
    return resultOf(mDriver.words("initialize"));
}

void DriverCom::uninitialize()
{
    mDriver.ask("uninitialize");
}

RnComResult DriverCom::classIdOf(const std::u16string& inProgramId, RnClassId& outId)
{
    const QStringList words = mDriver.words("classIdOf " + hex(inProgramId));
    const std::string bytes = bytesOf(words.value(1).toStdString());
    std::memcpy(outId.bytes, bytes.data(), std::min(bytes.size(), sizeof outId.bytes));
    return resultOf(words);
}

RnUnknown* DriverCom::activeObject(const RnClassId& inId)
{
    const QStringList words =
        mDriver.words("activeObject " +
                      hex(std::string_view(reinterpret_cast<const char*>(inId.bytes), sizeof inId.bytes)));
    return words.value(0).toInt() ? new Object(mDriver, words.at(0)) : nullptr;
}
