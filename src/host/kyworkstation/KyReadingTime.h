#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>

class QWidget;

/// Adds to the reading time of the study in the active viewer (KyStudyMetrics), second by second, while the
/// window is the one that the user works in.
class KyReadingTime : public QObject
{
    Q_OBJECT

public:
    /// \a inWindow owns it.
    explicit KyReadingTime(QWidget& inWindow);

protected:
    void timerEvent(QTimerEvent* inEvent) override;

private:
    QWidget& mWindow;
    QElapsedTimer mSinceLast;
};
