#pragma once

#include "KyImageViewer.h"

#include <QtCore/QObject>

#include <vector>

/// The viewers of a host: one, two beside each other, or four.
///
/// It makes the viewers and holds them. Their places count from 1, row by row; that is also their display set
/// id. The property "Viewers.Layout" decides how many there are ("1x1", "1x2", "2x2": rows and columns), so
/// that the settings, tools and scripts can change it. A place that a smaller layout leaves out keeps what it
/// shows; its viewer closes, and another one opens when the place comes back. The active viewer stays in
/// sight: if need be it changes places with the last one.
///
/// Scripts hear of each step of a change through the tools that follow the viewers. A layout that is asked
/// for in the middle of a change comes into force behind it.
///
/// GUI thread only. Ends before the viewer manager.
class KyViewerLayout : public QObject
{
    Q_OBJECT

public:
    static constexpr const char* PropertyId = "Viewers.Layout";
    static constexpr int MostPlaces = 4;

    /// Registers the property, once. To be called before a layout is made.
    static void registerProperties();

    explicit KyViewerLayout(KySeriesVolume::Reading inReading, QObject* inParent = nullptr);
    ~KyViewerLayout() override;

    int rows() const { return mRows; }
    int columns() const { return mColumns; }
    int count() const { return mRows * mColumns; }
    /// "1x1", "1x2" or "2x2"; false, with no change, for anything else. Sets the property where there is one.
    bool setLayout(const QString& inKey);
    QString layout() const;

    /// Null for a place, counted from 0, that there isn't.
    KyImageViewer* viewer(int inPlace) const;
    /// Null when the active viewer is none of these.
    KyImageViewer* activeViewer() const;

    /// Opens a series in the active viewer.
    void open(const KyViewerLayer& inLayer);
    /// Fills the places that are empty with the series of the studies, those without images left out: the
    /// first of each study in turn, then the second. Nothing that is on show already is shown twice.
    void fill(const std::vector<std::shared_ptr<Ovg::DicomDirectoryEntry>>& inStudies);
    /// Empties the places whose studies are none of these, also those out of sight.
    void keepOnly(const std::vector<std::shared_ptr<Ovg::DicomDirectoryEntry>>& inStudies);

    /// The first series of a study that may have images, by its modality; an invalid layer when there is
    /// none.
    static KyViewerLayer firstSeries(const std::shared_ptr<Ovg::DicomDirectoryEntry>& inStudy);
    /// Whether a series can have images at all: reports, plans and the like can't.
    static bool hasImages(const Ovg::DicomSeries& inSeries);

Q_SIGNALS:
    /// There are other viewers now.
    void layoutChanged();

private:
    void apply(const QString& inKey);
    void change(int inRows, int inColumns);
    void makeActiveVisible(int inCount);
    bool isShown(const KyViewerLayer& inLayer) const;

    const KySeriesVolume::Reading mReading;
    QString mWanted;
    bool mIsChanging = false;
    int mRows = 0;
    int mColumns = 0;
    std::vector<RnHandle<KyImageViewer>> mViewers;
    /// What the places behind the viewers show when they come back.
    std::vector<KyImageViewer::Content> mHidden;
};
