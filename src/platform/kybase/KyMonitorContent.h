#pragma once

#include <QList>
#include <QPointer>
#include <QString>

class JxMainWindow;

/// What the client shows on its monitors under one name, such as "View" for the images, and the main windows
/// that show it.
///
/// Belongs to the KyMonitorManager, whose content() makes it. The windows stay their makers'. GUI thread
/// only.
class KyMonitorContent
{
public:
    /// The content of the viewers, which the first main window of every host with windows shows.
    static constexpr const char* View = "View";

    explicit KyMonitorContent(QString inId);

    const QString& id() const { return mId; }

    /// The windows in the order in which they were added. Null stands for one that has gone.
    QList<JxMainWindow*> mainWindows() const;
    void addMainWindow(JxMainWindow* inWindow);
    void removeMainWindow(const JxMainWindow* inWindow);

private:
    const QString mId;
    QList<QPointer<JxMainWindow>> mMainWindows;
};
