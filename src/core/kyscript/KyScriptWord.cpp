#include "KyScriptWord.h"

#include <rnlib/RnLogFile.h>
#include <rnwin/RnCom.h>

#include <optional>
#include <utility>

namespace {

constexpr std::uint32_t UserDefaultLocale = 0x400;
constexpr std::int32_t CharacterUnit = 1; // wdCharacter

void logError(const char* inMessage)
{
    getTheLogInstance().errorf("%s", inMessage);
}

/// A reference to an object of Word, which ends with this. Null when there is none.
class Reference
{
public:
    explicit Reference(RnDispatch* inObject = nullptr)
        : mObject(inObject)
    {}
    Reference(Reference&& ioOther) noexcept
        : mObject(std::exchange(ioOther.mObject, nullptr))
    {}
    ~Reference() { end(); }
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;
    Reference& operator=(Reference&&) = delete;

    void end()
    {
        if (RnDispatch* object = std::exchange(mObject, nullptr))
            object->release();
    }

    explicit operator bool() const { return mObject; }
    RnDispatch* operator->() const { return mObject; }

private:
    RnDispatch* mObject;
};

/// The id of a member, or a line of the log.
std::optional<std::int32_t> idOf(const Reference& inObject, const char16_t* inName, const char* inMessage)
{
    std::int32_t id = 0;
    if (inObject->idOfName(inName, UserDefaultLocale, id) >= 0)
        return id;
    logError(inMessage);
    return std::nullopt;
}

/// What became of a step.
enum class Outcome
{
    Done, ///< Also where Word has answered with no object, which is no failure.
    Failed,
};

/// The object that a property holds; null after a failure, which is a line of the log, and where it holds
/// none.
struct Property
{
    Reference object;
    Outcome outcome = Outcome::Done;
};

Property property(const Reference& inObject, const char16_t* inName, const char* inNoId,
                  const char* inNoValue)
{
    const auto id = idOf(inObject, inName, inNoId);
    if (!id)
        return {Reference(), Outcome::Failed};
    RnDispatch* result = nullptr;
    RnInvocation get;
    get.id = *id;
    get.locale = UserDefaultLocale;
    get.flags = RnInvocation::PropertyGet;
    if (inObject->invoke(get, &result) >= 0)
        return {Reference(result), Outcome::Done};
    logError(inNoValue);
    return {Reference(), Outcome::Failed};
}

Reference activeDocument(const Reference& inApplication)
{
    return property(inApplication, u"ActiveDocument",
                    "Failed to get the ID of the property 'ActiveDocument'.",
                    "Failed to invoke the property get method for obtaining the active document.")
        .object;
}

bool setText(const Reference& inRange, std::int32_t inId, const QString& inText)
{
    RnInvocation put;
    put.id = inId;
    put.locale = UserDefaultLocale;
    put.flags = RnInvocation::PropertyPut;
    put.arguments = {inText.toStdU16String()};
    put.namedArguments = {RnInvocation::PutId};
    if (inRange->invoke(put, nullptr) >= 0)
        return true;
    logError("Failed to invoke the property put method for setting the text.");
    return false;
}

/// The id comes from the range while the call goes to the selection.
bool moveStart(const Reference& inSelection, std::int32_t inId, qsizetype inCount)
{
    RnInvocation move;
    move.id = inId;
    move.locale = UserDefaultLocale;
    move.flags = RnInvocation::Method;
    move.arguments = {std::int32_t(inCount), CharacterUnit};
    move.wantsException = true;
    if (inSelection->invoke(move, nullptr) >= 0)
        return true;
    logError("Failed to invoke the MoveStart method.");
    return false;
}

Outcome replaceRange(const Reference& inSelection, const Reference& inRange, const QString& inText)
{
    const auto textId = idOf(inRange, u"Text", "Failed to get the ID of the property 'Text'.");
    if (!textId || !setText(inRange, *textId, inText))
        return Outcome::Failed;
    const auto moveId = idOf(inRange, u"MoveStart", "Failed to get the ID of the property 'MoveStart'");
    return moveId && moveStart(inSelection, *moveId, inText.size()) ? Outcome::Done : Outcome::Failed;
}

Outcome replaceSelection(const Reference& inApplication, const QString& inText)
{
    const Property selection =
        property(inApplication, u"Selection", "Failed to get the ID of the property 'Selection'.",
                 "Failed to invoke the property get method for obtaining the selection.");
    if (!selection.object)
        return selection.outcome;
    const Property range =
        property(selection.object, u"Range", "Failed to get the ID of the property 'Range'.",
                 "Failed to invoke the property get method for obtaining the range.");
    if (!range.object)
        return range.outcome;
    // The range goes before the selection.
    return replaceRange(selection.object, range.object, inText);
}

/// The object of the Word that is running; null after a line of the log.
Reference runningWord(RnCom& inCom)
{
    RnClassId id;
    if (inCom.classIdOf(u"Word.Application", id) < 0) {
        logError("Could not retrieve Class Identifier.");
        return Reference();
    }
    RnUnknown* unknown = inCom.activeObject(id);
    RnDispatch* application = nullptr;
    if (unknown) {
        unknown->queryDispatch(application);
        unknown->release();
    }
    if (!application)
        logError("Could not get Word Instance.");
    return Reference(application);
}

} // namespace

KyScriptWord::KyScriptWord(QObject* parent)
    : QObject(parent)
{}

bool KyScriptWord::isAvailable() const
{
    return true;
}

void KyScriptWord::insertString(QString text)
{
    RnCom* com = RnCom::instance();
    if (!com || com->initialize() < 0) {
        logError("Could not initialize COM.");
        return;
    }
    Reference application = runningWord(*com);
    if (!application) {
        com->uninitialize();
        return;
    }
    Reference document = activeDocument(application);
    if (!document)
        logError("Could not get Active Document.");
    else if (replaceSelection(application, text) == Outcome::Failed)
        logError("Could not replace Selection.");
    com->uninitialize();
    // Behind the end of COM, in this order.
    document.end();
    application.end();
}
