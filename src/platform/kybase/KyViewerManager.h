#pragma once

#include <vector>

class KyBaseViewer;

/// The viewers of the active layout, in the order in which they were made, and which of them is active.
///
/// Somebody's object: construction makes it the one that getInstance() finds, destruction ends that. It
/// owns no viewer; each enters and leaves by itself, see KyBaseViewer. GUI thread only.
class KyViewerManager
{
public:
    KyViewerManager();
    virtual ~KyViewerManager();
    KyViewerManager(const KyViewerManager&) = delete;
    KyViewerManager& operator=(const KyViewerManager&) = delete;

    /// Null when nobody has made one.
    static KyViewerManager* getInstance();

    int numViewers() const { return static_cast<int>(mViewers.size()); }
    /// Null for an index outside of 0 to numViewers() - 1.
    KyBaseViewer* viewer(int inIndex) const;

    /// Null when no viewer is active, as after the active one has closed.
    KyBaseViewer* activeViewer() const { return mActiveViewer; }
    /// Null makes none active. A viewer that is not in the manager changes nothing.
    virtual void setActiveViewer(KyBaseViewer* inViewer);

private:
    friend class KyBaseViewer;
    void addViewer(KyBaseViewer* inViewer);
    void removeViewer(const KyBaseViewer* inViewer);

    std::vector<KyBaseViewer*> mViewers;
    KyBaseViewer* mActiveViewer = nullptr;
};
