#include "JxEventLoop.h"

#include <QTimer>

JxEventLoop::JxEventLoop(QObject* inParent)
    : QEventLoop(inParent)
{}

int JxEventLoop::exec(int inMSecs, QEventLoop::ProcessEventsFlags inFlags)
{
    if (isRunning())
        return -1;
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &QEventLoop::quit);
    if (inMSecs >= 0)
        timer.start(inMSecs);
    return QEventLoop::exec(inFlags);
}
