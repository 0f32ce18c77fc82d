#pragma once

#include "KyMonitorContent.h"

#include <QPointer>
#include <QString>
#include <QWidget>

#include <map>

/// The windows of the client on its monitors, and who parents a new one.
///
/// Somebody's object: construction makes it the one that the statics ask, destruction ends that. Without
/// one, and in a host without windows, there is no parent. GUI thread only.
class KyMonitorManager
{
public:
    KyMonitorManager();
    ~KyMonitorManager();
    KyMonitorManager(const KyMonitorManager&) = delete;
    KyMonitorManager& operator=(const KyMonitorManager&) = delete;

    /// Null when nobody has made one.
    static KyMonitorManager* instance();

    /// The host's main window, which stays the host's; null and a deleted one count as none.
    void setMainWindow(QWidget* inWindow) { mMainWindow = inWindow; }

    /// The widget that is to own a modal window: the main window, never another modal window, since that
    /// could be closed and deleted under the new one. Null without a main window.
    static QWidget* parentForModalWidget();

    /// The widget that is to own a window of the whole application that isn't modal: the main window.
    /// Null without one. \a inContentId, the monitor content that the window belongs to, is empty for none.
    static QWidget* parentForGlobalNonModalWidget(const QString& inContentId = QString());

    /// The content of this name, made when it is asked for the first time. Never null; belongs to the
    /// manager.
    KyMonitorContent* content(const QString& inId);
    /// The main windows that show \a inContent, the first one first, null for one that has gone. Empty for a
    /// null content.
    QList<JxMainWindow*> mainWindows(const KyMonitorContent* inContent) const;

private:
    QPointer<QWidget> mMainWindow;
    std::map<QString, KyMonitorContent> mContents;
};
