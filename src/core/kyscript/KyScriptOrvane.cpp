#include "KyScriptOrvane.h"

#include "KyScriptTexts.h"
#include "KyScriptViewer.h"

#include <kybase/KyActionUI.h>
#include <kybase/KyApplication.h>
#include <kybase/KyBaseViewer.h>
#include <kybase/KyContextToolBar.h>
#include <kybase/KyEditor.h>
#include <kybase/KyLoadHelper.h>
#include <kybase/KySessionContext.h>
#include <kybase/KyToolRegistry.h>
#include <kybase/KyViewerManager.h>
#include <ovvolren/OvServerPeer.h>

#include <QtCore/QFile>
#include <QtCore/QPointer>
#include <QtQml/QJSEngine>
#include <QtWidgets/QWidget>

QStringList KyScriptOrvane::mExtAcc;

namespace {

constexpr const char* IconFolder = ":icons/";
/// Stands in for an icon that was not found.
constexpr const char* MissingIcon = "OrvaneLogo";

KyToolDecorations* decorations()
{
    const KyApplication* application = KyApplication::instance();
    return application ? application->toolDecorations() : nullptr;
}

std::shared_ptr<KyTool> toolOf(const QString& inKey)
{
    return KyToolRegistry::getToolByDecorationKey<KyTool>(inKey.toLatin1().constData(), true);
}

/// What shows the tool. To change one may end another.
QList<QPointer<QAction>> actionsOf(const KyTool& inTool)
{
    QList<QPointer<QAction>> actions;
    for (KyToolUI* ui : inTool.getUIs()) {
        if (QAction* action = ui ? ui->action() : nullptr)
            actions.append(action);
    }
    return actions;
}

RnHandle<KyBaseViewer> activeViewerHandle()
{
    const KyViewerManager* manager = KyViewerManager::getInstance();
    return manager ? manager->activeViewer() : nullptr;
}

RnHandle<KyBaseViewer> findViewer(const QString& inProtocolDisplaySetId)
{
    const KyViewerManager* manager = KyViewerManager::getInstance();
    const std::string id = inProtocolDisplaySetId.toLatin1().toStdString();
    for (int i = 0; manager && i < manager->numViewers(); ++i) {
        KyBaseViewer* viewer = manager->viewer(i);
        if (viewer && viewer->protocolDisplaySetId() == id)
            return viewer;
    }
    return nullptr;
}

using Session = std::shared_ptr<KySessionContext>;

KyLoadHelper* loadHelper(const Session& inSession)
{
    return inSession ? inSession->component<KyLoadHelper>(true) : nullptr;
}

} // namespace

KyScriptOrvane::KyScriptOrvane(QObject* parent)
    : QObject(parent)
{}

KyScriptOrvane::~KyScriptOrvane()
{
    for (const auto& [id, viewer] : mViewers)
        delete viewer;
}

QObject* KyScriptOrvane::tool(QString inKey)
{
    const auto tool = toolOf(inKey);
    if (!tool)
        return nullptr;
    QAction* action = KyActionUI::createAction(tool, tool->hotKeyScope(), parent());
    QJSEngine::setObjectOwnership(action, QJSEngine::CppOwnership);
    return action;
}

void KyScriptOrvane::setToolIcon(QString inKey, QString inIcon)
{
    KyToolDecorations* store = decorations();
    if (!store)
        return;
    QString path = inIcon;
    if (!inIcon.isEmpty() && !QFile::exists(inIcon) && !QFile::exists(QLatin1String(IconFolder) + inIcon))
        path = QLatin1String(MissingIcon);
    store->setIcon(inKey, path);

    const auto tool = toolOf(inKey);
    if (!tool)
        return;
    const QIcon icon = store->icon(inKey.toLatin1().constData());
    for (const QPointer<QAction>& action : actionsOf(*tool)) {
        if (action)
            action->setIcon(icon);
    }
}

void KyScriptOrvane::setToolText(QString inKey, QString inTooltip, QString inMenuText)
{
    KyToolDecorations* store = decorations();
    if (!store)
        return;
    store->setTexts(inKey, inTooltip, inMenuText, QString());

    const auto tool = toolOf(inKey);
    if (!tool)
        return;
    const QByteArray key = inKey.toLatin1();
    const QString label = store->label(key.constData(), tool->isActive());
    const QString toolTip = store->toolTip(key.constData());
    for (const QPointer<QAction>& action : actionsOf(*tool)) {
        if (action)
            action->setToolTip(toolTip);
        if (action)
            action->setText(label);
        if (action)
            action->setIconText(label);
    }
}

QObject* KyScriptOrvane::editor(QString inKey)
{
    KyEditor* editor = KyEditor::editor(inKey.toLatin1().constData(), false);
    return editor ? editor->scriptObject(nullptr) : nullptr;
}

bool KyScriptOrvane::activateViewer(QString inProtocolDisplaySetId)
{
    const RnHandle<KyBaseViewer> viewer = findViewer(inProtocolDisplaySetId);
    if (!viewer)
        return false;
    KyViewerManager::getInstance()->setActiveViewer(viewer.get());
    if (QWidget* widget = viewer->widget())
        widget->update();
    return true;
}

QObject* KyScriptOrvane::activeViewer()
{
    return wrapped(activeViewerHandle().get());
}

QObject* KyScriptOrvane::viewer(QString inProtocolDisplaySetId)
{
    return wrapped(findViewer(inProtocolDisplaySetId).get());
}

/// A wrapper is never dropped while this object lives: scripts may have kept it.
QObject* KyScriptOrvane::wrapped(KyBaseViewer* inViewer)
{
    if (!inViewer)
        return nullptr;
    const auto present = mViewers.find(inViewer->uniqueID());
    if (present != mViewers.end())
        return present->second;

    auto* wrapper = new KyScriptViewer(parent(), inViewer);
    QJSEngine::setObjectOwnership(wrapper, QJSEngine::CppOwnership);
    const auto [entry, isNew] = mViewers.emplace(inViewer->uniqueID(), wrapper);
    if (!isNew)
        delete std::exchange(entry->second, wrapper);
    return wrapper;
}

void KyScriptOrvane::setDisplayHint(QString text)
{
    const RnHandle<KyBaseViewer> viewer = activeViewerHandle();
    if (KyContextToolBar* toolBar = viewer ? viewer->contextToolBar() : nullptr)
        toolBar->setDisplayHint(text);
}

int KyScriptOrvane::getSessionContextID() const
{
    return KySessionContext::currentInstanceID().value;
}

void KyScriptOrvane::exec(QString inCommand, QString inArguments)
{
    if (OvServerPeer* peer = OvServerPeer::instance())
        peer->execOnServer(inCommand.toLatin1().constData(), inArguments.toLatin1().constData());
}

QString KyScriptOrvane::eval(QString inCommand, QString inArguments)
{
    OvServerPeer* peer = OvServerPeer::instance();
    if (!peer)
        return QString();
    const std::string answer =
        peer->evalOnServer(inCommand.toLatin1().constData(), inArguments.toLatin1().constData());
    return QString::fromLatin1(answer.data(), qsizetype(answer.size()));
}

/// The session is held: another may begin while the user reads.
int KyScriptOrvane::showOutOfSyncWarning()
{
    const Session session = KySessionContext::currentInstance();
    KyLoadHelper* helper = loadHelper(session);
    return helper ? helper->showOutOfSyncWarning(mExtAcc) : 0;
}

bool KyScriptOrvane::isOutOfSync()
{
    const KyLoadHelper* helper = loadHelper(KySessionContext::currentInstance());
    return helper && helper->isOutOfSync(mExtAcc);
}

void KyScriptOrvane::setExtAcc(const QStringList& inExtAcc)
{
    if (inExtAcc == mExtAcc)
        return;
    mExtAcc = inExtAcc;
    Q_EMIT extAccChanged();
}

void KyScriptOrvane::setExtAccVariant(const QVariant& inExtAcc)
{
    if (inExtAcc.typeId() == QMetaType::QStringList) { // from C++
        setExtAcc(inExtAcc.toStringList());
        return;
    }
    QJSValue value = inExtAcc.value<QJSValue>();
    if (inExtAcc.typeId() == QMetaType::QString)
        value = inExtAcc.toString();
    if (const auto texts = KyScriptTexts::argument(this, value, QStringLiteral("Orvane.extAcc")))
        setExtAcc(*texts);
}
