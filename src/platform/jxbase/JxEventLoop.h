#pragma once

#include <QEventLoop>

/// A wait with a time limit during which events are served: the way to wait without blocking the thread.
///
/// May be used again once a wait is over. Like any QEventLoop it must outlive its own wait.
class JxEventLoop : public QEventLoop
{
    Q_OBJECT

public:
    explicit JxEventLoop(QObject* inParent = nullptr);

    using QEventLoop::exec;

    /// Serves events until \a inMSecs milliseconds are over, or quit() or exit() is called. 0 serves the
    /// events that are pending; below 0 there is no limit. \a inFlags say which events are served, as with
    /// QEventLoop::exec().
    ///
    /// Gives 0 after the time and after quit(), the argument of exit(), and -1 at once when this loop is
    /// running already.
    int exec(int inMSecs, QEventLoop::ProcessEventsFlags inFlags = QEventLoop::AllEvents);
};
