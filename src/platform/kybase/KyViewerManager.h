#pragma once

#include <QObject>

#include <vector>

class KyBaseViewer;

/// The viewers of the active layout, in the order in which they were made, and which of them is active.
///
/// Somebody's object: construction makes it the one that getInstance() finds, destruction ends that. It
/// owns no viewer; each enters and leaves by itself, see KyBaseViewer. GUI thread only.
class KyViewerManager : public QObject
{
    Q_OBJECT

public:
    KyViewerManager();
    ~KyViewerManager() override;

    /// Null when nobody has made one.
    static KyViewerManager* getInstance();

    virtual int numViewers() const { return static_cast<int>(mViewers.size()); }
    /// Null for an index outside of 0 to numViewers() - 1. A derived manager may have places without a
    /// viewer, which are null too.
    virtual KyBaseViewer* viewer(int inIndex) const;

    /// Null when no viewer is active, as after the active one has closed.
    KyBaseViewer* activeViewer() const { return mActiveViewer; }
    /// Null makes none active. A viewer that is not in the manager changes nothing.
    virtual void setActiveViewer(KyBaseViewer* inViewer);

signals:
    /// A viewer has come or is going. One that comes is still being made, and one that goes ended: both are
    /// there for comparison only.
    void viewersChanged();

    /// Another viewer, or none, is active now.
    void activeViewerChanged(KyBaseViewer* inViewer);

    /// A viewer shows something else than before: other images, another slice, orientation or weight.
    void contentChanged(KyBaseViewer* inViewer);

private:
    friend class KyBaseViewer;
    void addViewer(KyBaseViewer* inViewer);
    void removeViewer(const KyBaseViewer* inViewer);

    std::vector<KyBaseViewer*> mViewers;
    KyBaseViewer* mActiveViewer = nullptr;
};
