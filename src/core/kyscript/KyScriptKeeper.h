#pragma once

#include <QtCore/QObject>
#include <QtCore/QPointer>

/// Puts the deletion of a host object off while one of its signals is being handled.
///
/// A script's handler can wait in an event loop in which the garbage collector, or a `destroy()`, has the
/// object deleted; what is emitting would not survive that. Made by the object as its child. An immediate
/// deletion from C++ goes through: who emits still has to look whether the object is there.
class KyScriptKeeper : public QObject
{
    Q_OBJECT

public:
    explicit KyScriptKeeper(QObject* inKept);

    bool eventFilter(QObject* inWatched, QEvent* inEvent) override;

    /// One handling, for the length of a scope. The object may end in it.
    class Scope
    {
    public:
        explicit Scope(KyScriptKeeper* inKeeper);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        const QPointer<KyScriptKeeper> mKeeper;
    };

private:
    class Deletion;

    /// Whether a deletion that is due now has to wait, which is then kept in mind.
    bool isToWait();

    int mDepth = 0;
    bool mIsDue = false;
};
