#pragma once

#include "KySeriesVolume.h"

#include <kybase/KyBaseViewer.h>
#include <kybase/KyContextToolBar.h>
#include <ovbase/OvImageSeries.h>
#include <ovvolren/OvImageSlice.h>
#include <ovwebservice/DicomDirectoryEntry.h>

#include <QtCore/QObject>
#include <QtCore/QPointF>

#include <optional>
#include <vector>

/// What a viewer shows in one layer: a series of a study.
struct KyViewerLayer
{
    std::shared_ptr<Ovg::DicomDirectoryEntry> study = {};
    std::size_t series = 0; ///< Its number in the study.

    bool isValid() const { return study && series < study->series().size(); }
    const Ovg::DicomSeries& dicomSeries() const { return study->series()[series]; }
};

/// One viewer of the hosts: a series, and a second one fused into it, one plane at a time.
///
/// The class knows what is shown and how; a widget draws it, in a host with windows. A series takes a while
/// to come in; until its headers are read there is no volume and no slice. Made and held by KyViewerLayout.
///
/// The viewer's conditions: in a plane across the images elements have a value only where all images share
/// it, and a window that the user has set is told as the Window Center and Window Width of the first layer.
class KyImageViewer final : public QObject, public KyBaseViewer, private KyConditionSource
{
    Q_OBJECT

public:
    /// How a plane fills the widget.
    struct View
    {
        double zoom = 1;  ///< 1 shows the whole plane.
        QPointF pan = {}; ///< Of the plane's middle from the widget's, in parts of the widget's size.

        bool operator==(const View&) const = default;
    };

    /// One layer with what has been read of it.
    struct Layer
    {
        KyViewerLayer what = {};
        RnHandle<OvImageSeries> series = {};
        std::shared_ptr<KySeriesVolume> volume = {};
    };

    /// All that a viewer shows and how, to be moved from one to another.
    struct Content
    {
        std::vector<Layer> layers = {};
        RnHandle<OvImageSlice> slice = {}; ///< Null until the first layer is there, or has no image.
        std::optional<OvWindow> window = {};
        bool isInverted = false;
        float fusionWeight = 0.5F;
        View view = {};
    };

    static constexpr double SmallestZoom = 0.1;
    static constexpr double LargestZoom = 50;

    /// \a inPlace is the place in the layout, from 1.
    KyImageViewer(int inPlace, KySeriesVolume::Reading inReading);

    // KyBaseViewer
    Ky::ViewerType viewerType() const override;
    int viewSubType() const override;
    KyConditionSource* conditionSource() override { return this; }
    const std::string& protocolDisplaySetId() const override { return mPlace; }
    /// Its id is the series instance UID.
    OvImageSeries* imageSeries(int inIndex) override;
    OvVolume* volume(int inIndex) override;
    OvSlice* slice(int inIndex) override;
    float fusionWeight() const override { return mContent.layers.size() > 1 ? mContent.fusionWeight : 0; }
    QWidget* widget() const override { return mWidget; }
    KyContextToolBar* contextToolBar() const override { return mToolBar; }

    /// The widget that draws the viewer; it stays its owner's, who takes it back before its end.
    void setWidget(QWidget* inWidget) { mWidget = inWidget; }

    /// Shows that series alone, or nothing when it is not valid.
    void open(const KyViewerLayer& inLayer);
    /// Fuses that series into the first, in place of a second one that is there; an invalid one ends the
    /// fusion. Whether the two can be fused at all shows when both are there, in message().
    void fuse(const KyViewerLayer& inLayer);
    std::vector<KyViewerLayer> layers() const;
    bool isEmpty() const { return mContent.layers.empty(); }

    /// Leaves the viewer empty.
    Content takeContent();
    void setContent(Content inContent);

    /// The volume of a layer when it is there, without asking for it.
    OvImageVolume* imageVolume(int inLayer) const;
    KySeriesVolume* seriesVolume(int inLayer) const;
    /// Null until the first layer is there, or has no image.
    OvImageSlice* imageSlice() const { return mContent.slice.get(); }

    /// Number of planes of this orientation, 0 when nothing is there.
    int planeCount() const;
    void scrollTo(int inNumber);
    void scrollBy(int inPlanes) { scrollTo(planeNumber() + inPlanes); }
    int planeNumber() const;

    /// Whether the volume has planes close to that orientation.
    bool canShow(OvSlice::Orientation inOrientation) const;
    /// Turns to the planes closest to that orientation, through the middle of the volume.
    void setOrientation(OvSlice::Orientation inOrientation);
    /// The orientation that setOrientation() takes for the planes on show; Unknown when there is none.
    OvSlice::Orientation orientation() const;

    /// The window in force for a layer: the one that was set, or else that of the image, or else the range of
    /// all values.
    OvWindow window(int inLayer) const;
    /// A width that is not greater than 0 is ignored.
    void setWindow(const OvWindow& inWindow);
    void resetWindow();
    bool hasOwnWindow() const { return mContent.window.has_value(); }

    bool isInverted() const { return mContent.isInverted; }
    void setInverted(bool inInverted);

    /// From 0 to 1; others are brought to the nearest. Kept also while there is no second layer.
    void setFusionWeight(double inWeight);

    const View& view() const { return mContent.view; }
    /// The zoom is brought to between SmallestZoom and LargestZoom, the pan to at most the whole plane.
    void setView(const View& inView);

    /// Back to what was on show when the series was opened.
    void reset();

    /// Why there is nothing to see, or not what was asked for; a sentence for people, empty when all is well.
    QString message() const;
    /// What people must know of what they see.
    QStringList notices() const;

Q_SIGNALS:
    /// Something on show is not what it was: the images, the plane, how they are drawn, how far they are in.
    void changed();

protected:
    ~KyImageViewer() override = default;

private:
    std::shared_ptr<const KyDICOMObjectInfo::ConditionDictionary> conditionDictionary() const override;

    void addLayer(const KyViewerLayer& inLayer);
    void listenTo(const KySeriesVolume& inVolume);
    void stopListening();
    void makeSlice();
    void noteContent();

    const std::string mPlace;
    const KySeriesVolume::Reading mReading;
    KyContextToolBar* const mToolBar;
    QWidget* mWidget = nullptr;
    Content mContent;
};
