#include "KyScriptRichEditSearch.h"

#include <rnlib/RnLogFile.h>

#include <QtCore/QFileInfo>

#include <unordered_map>
#include <vector>

namespace {

constexpr int PathCapacity = 260;
constexpr int NameCapacity = 256;
constexpr int ContentCapacity = 1025;

struct KnownTarget
{
    KyScriptRichEditTarget target;
    /// The target with the expressions that are matched, which stay compiled here.
    KyScriptRichEditTarget matched;
    RnWindows::Window window = 0;
};

/// An expression for whole strings, without any of the options that it was configured with.
QRegularExpression wholeMatch(const QRegularExpression& inExpression)
{
    const QString pattern = inExpression.pattern();
    return pattern.isEmpty() ? QRegularExpression()
                             : QRegularExpression(QRegularExpression::anchoredPattern(pattern));
}

KyScriptRichEditTarget wholeMatches(KyScriptRichEditTarget ioTarget)
{
    for (QRegularExpression* expression :
         {&ioTarget.processName, &ioTarget.windowClassName, &ioTarget.contentPattern,
          &ioTarget.topLevelWindowName, &ioTarget.parentWindowName, &ioTarget.windowName})
        *expression = wholeMatch(*expression);
    return ioTarget;
}

std::vector<KnownTarget>& knownTargetTable()
{
    static std::vector<KnownTarget> table;
    return table;
}

KnownTarget& entryOf(const KyScriptRichEditTarget& inTarget)
{
    auto& table = knownTargetTable();
    for (KnownTarget& known : table) {
        if (known.target == inTarget)
            return known;
    }
    table.push_back({inTarget, wholeMatches(inTarget), 0});
    return table.back();
}

/// What one search knows about an expression.
class Condition
{
public:
    explicit Condition(const QRegularExpression& inExpression)
        : mExpression(inExpression)
        , mIsEmpty(inExpression.pattern().isEmpty())
        , mIsValid(!mIsEmpty && inExpression.isValid())
    {}

    /// Sets no condition.
    bool isEmpty() const { return mIsEmpty; }

    bool matches(const QString& inText) const { return mIsValid && mExpression.match(inText).hasMatch(); }
    /// Names come again and again: each is matched once.
    bool matches(const std::u16string& inName)
    {
        const auto [known, isNew] = mKnown.try_emplace(inName, false);
        if (isNew)
            known->second = matches(QString::fromStdU16String(inName));
        return known->second;
    }

private:
    const QRegularExpression mExpression;
    const bool mIsEmpty;
    const bool mIsValid;
    std::unordered_map<std::u16string, bool> mKnown;
};

/// One walk over the windows of the desktop.
class Search
{
public:
    /// \a inTarget has the expressions as they are matched.
    Search(RnWindows& inWindows, const KyScriptRichEditTarget& inTarget)
        : mWindows(inWindows)
        , mConvertCRLFToLF(inTarget.convertCRLFToLF)
        , mProcessName(inTarget.processName)
        , mWindowClassName(inTarget.windowClassName)
        , mContentPattern(inTarget.contentPattern)
        , mTopLevelWindowName(inTarget.topLevelWindowName)
        , mParentWindowName(inTarget.parentWindowName)
        , mWindowName(inTarget.windowName)
    {}

    RnWindows::Window run()
    {
        RnWindows::Window found = 0;
        mWindows.enumWindows([&](RnWindows::Window inTopLevel) {
            found = findIn(inTopLevel);
            return found == 0;
        });
        return found;
    }

private:
    RnWindows::Window findIn(RnWindows::Window inTopLevel)
    {
        if (!processFits(inTopLevel) || !titleFits(mTopLevelWindowName, inTopLevel))
            return 0;
        mDescendants.clear();
        collectBelow(inTopLevel);
        for (const RnWindows::Window window : mDescendants) {
            if (controlFits(window))
                return window;
        }
        return 0;
    }

    bool processFits(RnWindows::Window inTopLevel)
    {
        if (mProcessName.isEmpty())
            return true;
        const RnWindows::Process process =
            mWindows.openProcess(RnWindows::QueryAndRead, mWindows.processId(inTopLevel));
        if (!process)
            return false;
        const std::u16string path = mWindows.moduleFileName(process, PathCapacity);
        mWindows.closeHandle(process);
        // Paths of Windows, also where this system has other ones.
        const QString normal = QString::fromStdU16String(path).replace(QLatin1Char('\\'), QLatin1Char('/'));
        return mProcessName.matches(QFileInfo(normal).fileName());
    }

    bool titleFits(Condition& inExpression, RnWindows::Window inWindow)
    {
        if (inExpression.isEmpty())
            return true;
        const std::u16string title = mWindows.windowText(inWindow, NameCapacity);
        return !title.empty() && inExpression.matches(title);
    }

    /// Each child is followed at once by what is below it.
    void collectBelow(RnWindows::Window inParent)
    {
        for (RnWindows::Window child = mWindows.findWindowEx(inParent, 0); child;
             child = mWindows.findWindowEx(inParent, child))
        {
            mDescendants.push_back(child);
            collectBelow(child);
        }
    }

    bool controlFits(RnWindows::Window inWindow)
    {
        if (!mWindowClassName.isEmpty() &&
            !mWindowClassName.matches(mWindows.className(inWindow, NameCapacity)))
            return false;
        return titleFits(mWindowName, inWindow) && contentFits(inWindow) && parentFits(inWindow) &&
               mWindows.isWindowVisible(inWindow);
    }

    bool contentFits(RnWindows::Window inWindow)
    {
        if (mContentPattern.isEmpty())
            return true;
        QString content = QString::fromStdU16String(mWindows.wideText(inWindow, ContentCapacity));
        if (mConvertCRLFToLF)
            content.replace(QLatin1String("\r\n"), QLatin1String("\n"));
        return mContentPattern.matches(content);
    }

    bool parentFits(RnWindows::Window inWindow)
    {
        if (mParentWindowName.isEmpty())
            return true;
        const RnWindows::Window parent = mWindows.parent(inWindow);
        return parent && titleFits(mParentWindowName, parent);
    }

    RnWindows& mWindows;
    const bool mConvertCRLFToLF;
    Condition mProcessName;
    Condition mWindowClassName;
    Condition mContentPattern;
    Condition mTopLevelWindowName;
    Condition mParentWindowName;
    Condition mWindowName;
    std::vector<RnWindows::Window> mDescendants;
};

void logNotFound(const KyScriptRichEditTarget& inTarget)
{
    const auto pattern = [](const QRegularExpression& inExpression) {
        return inExpression.pattern().toLatin1();
    };
    getTheLogInstance().tracef(
        1, "KyScriptRichEdit",
        "RichEdit not found (processName '%s', windowClassName '%s', contentPattern '%s', "
        "topLevelWindowName '%s', parentWindowName '%s', windowName '%s', convertCRLFToLF '%s')",
        pattern(inTarget.processName).constData(), pattern(inTarget.windowClassName).constData(),
        pattern(inTarget.contentPattern).constData(), pattern(inTarget.topLevelWindowName).constData(),
        pattern(inTarget.parentWindowName).constData(), pattern(inTarget.windowName).constData(),
        inTarget.convertCRLFToLF ? "true" : "false");
}

bool canBeSearched(const KyScriptRichEditTarget& inTarget)
{
    return !inTarget.windowClassName.pattern().isEmpty() &&
           !(inTarget.processName.pattern().isEmpty() && inTarget.topLevelWindowName.pattern().isEmpty());
}

} // namespace

RnWindows::Window KyScriptRichEditSearch::find(const KyScriptRichEditTarget& inTarget)
{
    if (inTarget.ownEditor)
        return 0;
    KnownTarget& known = entryOf(inTarget);
    RnWindows* windows = RnWindows::instance();
    if (known.window && windows && windows->isWindow(known.window) && windows->isWindowVisible(known.window))
        return known.window;
    known.window = 0;
    if (!canBeSearched(inTarget))
        return 0;
    const RnWindows::Window found = windows ? Search(*windows, known.matched).run() : 0;
    if (!found)
        logNotFound(inTarget);
    known.window = found;
    return found;
}

qsizetype KyScriptRichEditSearch::knownTargets()
{
    return qsizetype(knownTargetTable().size());
}
