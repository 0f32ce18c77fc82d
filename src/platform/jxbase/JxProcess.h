#pragma once

#include <QProcess>

/// A program of the workstation that the client starts and watches.
///
/// Belongs to its parent or to whoever made it. Ended while its program runs, it ends the program too, as any
/// QProcess does; leave() is the way to let the program go on. Use on one thread, with an event loop.
class JxProcess : public QProcess
{
    Q_OBJECT

public:
    /// With \a inKeepsOutput the program's output is kept in memory until it is read, however much it is.
    /// Without, the program writes to nowhere: there is nothing to read, nothing is kept, and the program is
    /// never held up.
    JxProcess(QObject* inParent, bool inKeepsOutput);
    ~JxProcess() override;

    /// Waits until no program runs in this object, serving events meanwhile, for at most \a inMSecs
    /// milliseconds; below 0 there is no limit, and 0 only looks. A program that is started here during the
    /// wait is waited for too.
    ///
    /// Gives whether none runs: true at once when none did, false when the time is over, when the
    /// application ends, or when this object was deleted meanwhile.
    bool stableWaitForFinished(int inMSecs);

    /// Ends the ownership without ending the program: this object goes by itself when the program has ended,
    /// and at once when none runs. So an ended program never stays behind as a zombie. Must not be called
    /// from a slot that a signal of this object has called; nobody may use the object afterwards.
    void leave();
};
