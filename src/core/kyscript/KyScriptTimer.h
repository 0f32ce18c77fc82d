#pragma once

#include <QtCore/QObject>
#include <QtCore/QTimer>

/// A timer of scripts, published as `new Timer()`. It repeats until setSingleShot(true).
///
/// The script that makes one owns it. Neither running nor having handlers keeps a timer alive: one that
/// nothing refers to any more goes with the next garbage collection and falls silent. A handler that refers
/// to its timer keeps it to the end of the engine. GUI thread only.
class KyScriptTimer : public QObject
{
    Q_OBJECT

public:
    /// Cheap and without effects, since every engine makes one to check that scripts can.
    Q_INVOKABLE explicit KyScriptTimer(QObject* parent = nullptr);

    /// Whether the timer stops after its first timeout. Holds at once, for one that is running, too.
    Q_INVOKABLE void setSingleShot(bool value);
    Q_INVOKABLE bool isSingleShot() const;

    /// Starts the timer, or starts it anew, with a timeout every \a msec milliseconds. With 0 it comes each
    /// time that the application has nothing else to do; a negative value stops the timer.
    Q_INVOKABLE void start(int msec);
    Q_INVOKABLE void stop();

    /// Milliseconds to the next timeout; 0 when it is overdue, -1 when the timer is not running.
    Q_INVOKABLE int remainingTime() const;

Q_SIGNALS:
    void timeout();

private:
    QTimer mTimer;
};
