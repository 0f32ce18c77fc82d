#include "KyScriptTool.h"

#include "KyScriptAbstractEngine.h"
#include "KyScriptProgram.h"
#include "KyScriptToolFile.h"

#include <jxbase/JxDom.h>
#include <kybase/KyApplication.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QFile>
#include <QtXml/QDomDocument>

#include <utility>

namespace {

constexpr const char* StripMarker = "tools";

/// The element behind \a inElement in document order, in the tree of \a inRoot; null at its end. A
/// QDomNodeList would walk the whole tree for each of its items.
QDomElement nextElement(const QDomElement& inElement, const QDomElement& inRoot)
{
    QDomElement next = inElement.firstChildElement();
    for (QDomNode node = inElement; next.isNull() && node != inRoot; node = node.parentNode())
        next = node.nextSiblingElement();
    return next;
}

/// The next element of that name, likewise.
QDomElement nextElement(const QDomElement& inElement, const QDomElement& inRoot, const char* inName)
{
    QDomElement next = nextElement(inElement, inRoot);
    while (!next.isNull() && next.tagName() != QLatin1String(inName))
        next = nextElement(next, inRoot);
    return next;
}

/// The path of an icon, told of in the log when no file is there; empty for no name.
QString iconPath(const QString& inName, const QString& inDirectory, const char* inFileName)
{
    if (inName.isEmpty())
        return QString();
    const QString path = inDirectory + QLatin1Char('/') + inName;
    if (!QFile::exists(path))
        getTheLogInstance().warnf("Tool Configuration %s - cannot find icon %s\n", inFileName,
                                  QFile::encodeName(path).constData());
    return path;
}

KyScriptProgram programOf(const QDomElement& inScript, const char* inFileName)
{
    return inScript.isNull() ? KyScriptProgram()
                             : KyScriptProgram(inScript, QFile::decodeName(inFileName), StripMarker);
}

void decorate(const QDomElement& inTool, const QString& inId, const QString& inIcon,
              const QString& inIconActive)
{
    const QString label = inTool.attribute(QStringLiteral("Label"), inId);
    const QString toolTip = inTool.attribute(QStringLiteral("Tooltip"), label);
    const KyApplication* application = KyApplication::instance();
    if (KyToolDecorations* decorations = application ? application->toolDecorations() : nullptr)
        decorations->registerDecoration(inId, QString(), inIcon, inIconActive, toolTip, label,
                                        inTool.attribute(QStringLiteral("LabelActive")));
}

} // namespace

struct KyScriptTool::Private
{
    QString engineName;
    KyScriptProgram onSet;
    KyScriptProgram onUnset;
    int viewerTest = 1; ///< 1: as the base class decides. 0: all viewers are supported.
};

KyScriptTool::KyScriptTool(const char* inKey, const QString& inEngineName)
    : KyObsoleteTrigger(inKey)
    , d(new Private{inEngineName, {}, {}, 1})
{}

KyScriptTool::~KyScriptTool() = default;

/// Never destroyed: what a tool leans on may end before.
std::vector<std::shared_ptr<KyScriptTool>>& KyScriptTool::tools()
{
    static auto& all = *new std::vector<std::shared_ptr<KyScriptTool>>;
    return all;
}

void KyScriptTool::loadTools(const char* inFileName, const char* inIconDirectory)
{
    if (!inFileName)
        return;
    const QDomElement root = KyScriptToolFile::read(inFileName).documentElement();
    const QString engineName = root.attribute(QStringLiteral("ScriptEngine"));
    const QString iconDirectory = QFile::decodeName(inIconDirectory ? inIconDirectory : "");
    for (auto tool = nextElement(root, root, "Tool"); !tool.isNull(); tool = nextElement(tool, root, "Tool"))
        loadTool(tool, engineName, inFileName, iconDirectory);
}

void KyScriptTool::loadTool(const QDomElement& inElement, const QString& inEngineName, const char* inFileName,
                            const QString& inIconDirectory)
{
    const QString id = inElement.attribute(QStringLiteral("Id"));
    const QDomElement onSet = nextElement(inElement, inElement, "OnSet");
    const QDomElement onUnset = nextElement(inElement, inElement, "OnUnset");
    if (id.isEmpty() || (onSet.isNull() && onUnset.isNull()))
        return;

    const QString icon = iconPath(inElement.attribute(QStringLiteral("Icon")), inIconDirectory, inFileName);
    const QString iconActive =
        iconPath(inElement.attribute(QStringLiteral("IconActive")), inIconDirectory, inFileName);
    decorate(inElement, id, icon, iconActive);

    const std::shared_ptr<KyScriptTool> tool(new KyScriptTool(id.toLatin1().constData(), inEngineName));
    tools().push_back(tool);
    tool->setActivatable(
        JxDom::qStringToBool(inElement.attribute(QStringLiteral("Checkable"), QStringLiteral("0")), false));
    tool->d->onSet = programOf(onSet, inFileName);
    tool->d->onUnset = programOf(onUnset, inFileName);
    tool->setViewerTest(inElement.attribute(QStringLiteral("Enabled")));
}

/// The words work the other way round than they read, which files in use rely on.
void KyScriptTool::setViewerTest(const QString& inEnabled)
{
    if (inEnabled.compare(QLatin1String("always"), Qt::CaseInsensitive) != 0)
        d->viewerTest = 0;
    if (inEnabled.compare(QLatin1String("whensupported"), Qt::CaseInsensitive) != 0)
        d->viewerTest = 1;
}

void KyScriptTool::clearTools()
{
    // What a tool leads to when it ends finds an empty list.
    const auto ended = std::exchange(tools(), {});
}

bool KyScriptTool::supportsViewer(const KyBaseViewer* inViewer) const
{
    return d->viewerTest == 0 || KyTool::supportsViewer(inViewer);
}

/// The tool may end while its script runs: nothing of it is used afterwards.
bool KyScriptTool::process(KyBaseViewer*, bool inFlag)
{
    const KyScriptProgram program = !inFlag && !isActivatable() ? d->onUnset : d->onSet;
    if (program.isEmpty())
        return true;
    KyScriptAbstractInterface::getInstance(d->engineName).runScript(program, true, false, false);
    return true;
}
