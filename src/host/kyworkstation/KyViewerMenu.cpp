#include "KyViewerMenu.h"

#include "KyStudySession.h"

#include <common/KyPatientName.h>
#include <ovbase/OvDateFormatter.h>

#include <QtGui/QActionGroup>

namespace {

struct Preset
{
    const char* text;
    double centre;
    double width;
};

/// Of computed tomography, in Hounsfield units.
constexpr Preset presets[] = {{QT_TRANSLATE_NOOP("KyViewerMenu", "&Soft Tissue"), 40, 400},
                              {QT_TRANSLATE_NOOP("KyViewerMenu", "&Lung"), -600, 1600},
                              {QT_TRANSLATE_NOOP("KyViewerMenu", "&Bone"), 450, 1800},
                              {QT_TRANSLATE_NOOP("KyViewerMenu", "B&rain"), 40, 80},
                              {QT_TRANSLATE_NOOP("KyViewerMenu", "&Vessels"), 200, 700}};

QString withoutMnemonics(QString inText)
{
    return inText.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

KyViewerMenu::KyViewerMenu(KyViewerLayout& inLayout, QWidget* inParent)
    : QMenu(tr("&Images"), inParent)
    , mLayout(inLayout)
    , mLayouts(new QActionGroup(this))
    , mOrientations(new QActionGroup(this))
    , mWindows(new QMenu(tr("&Window"), this))
    , mFusion(new QMenu(tr("&Fuse With"), this))
{
    setObjectName(QStringLiteral("imagesMenu"));
    addLayouts();
    addSeparator();
    addOrientations();
    addSeparator();
    addWindows();
    addFusion();
    addSeparator();
    mForImages += addForViewer(tr("&Reset"), {}, tr("Show the images as at first (R)"),
                               [](KyImageViewer& viewer) { viewer.reset(); });
    mForImages += addForViewer(tr("&Empty the Viewer"), {}, tr("Show nothing in the active viewer"),
                               [](KyImageViewer& viewer) { viewer.open({}); });
    connect(this, &QMenu::aboutToShow, this, &KyViewerMenu::refresh);
    refresh();
}

void KyViewerMenu::addLayouts()
{
    const auto add = [this](const QString& inText, const QString& inKey, Qt::Key inNumber) {
        QAction* entry = addAction(inText);
        entry->setObjectName(QLatin1String("layout.") + inKey);
        entry->setData(inKey);
        entry->setCheckable(true);
        entry->setShortcut(QKeySequence(Qt::CTRL | inNumber));
        mLayouts->addAction(entry);
        connect(entry, &QAction::triggered, this, [this, inKey] { mLayout.setLayout(inKey); });
    };
    add(tr("&One Viewer"), QStringLiteral("1x1"), Qt::Key_1);
    add(tr("&Two Viewers"), QStringLiteral("1x2"), Qt::Key_2);
    add(tr("Fo&ur Viewers"), QStringLiteral("2x2"), Qt::Key_4);
}

void KyViewerMenu::addOrientations()
{
    const auto add = [this](const QString& inText, OvSlice::Orientation inOrientation, const QString& inTip) {
        QAction* entry = addForViewer(inText, {}, inTip, [inOrientation](KyImageViewer& viewer) {
            viewer.setOrientation(inOrientation);
        });
        entry->setData(int(inOrientation));
        entry->setCheckable(true);
        mOrientations->addAction(entry);
    };
    add(tr("&Axial"), OvSlice::Axial, tr("Planes across the body (A)"));
    add(tr("&Sagittal"), OvSlice::Sagittal, tr("Planes between right and left (S)"));
    add(tr("&Coronal"), OvSlice::Coronal, tr("Planes between front and back (C)"));
}

void KyViewerMenu::addWindows()
{
    addMenu(mWindows);
    const auto add = [this](const QString& inText, const std::function<void(KyImageViewer&)>& inDo) {
        connect(mWindows->addAction(inText), &QAction::triggered, this, [this, inDo] {
            if (KyImageViewer* viewer = mLayout.activeViewer())
                inDo(*viewer);
        });
    };
    add(tr("&Of the Image"), [](KyImageViewer& viewer) { viewer.resetWindow(); });
    add(tr("&All Values"), [](KyImageViewer& viewer) {
        const OvImageVolume* volume = viewer.imageVolume(0);
        if (const auto range = volume ? volume->content().range() : std::nullopt)
            viewer.setWindow(OvWindow::spanning(range->first, range->second));
    });
    mWindows->addSeparator();
    for (const Preset& preset : presets)
        add(tr(preset.text), [preset](KyImageViewer& viewer) {
            viewer.setWindow({.centre = preset.centre, .width = preset.width, .function = OvWindow::Linear});
        });
    mInvert = addForViewer(tr("&Invert"), {}, tr("Swap black and white (I)"),
                           [](KyImageViewer& viewer) { viewer.setInverted(!viewer.isInverted()); });
    mInvert->setCheckable(true);
    mForImages += {mWindows->menuAction(), mInvert};
}

void KyViewerMenu::addFusion()
{
    addMenu(mFusion);
    connect(mFusion, &QMenu::aboutToShow, this, &KyViewerMenu::fillFusion);
    mForImages += mFusion->menuAction();
}

QAction* KyViewerMenu::addForViewer(const QString& inText, const QKeySequence& inKeys, const QString& inTip,
                                    const std::function<void(KyImageViewer&)>& inDo)
{
    QAction* entry = addAction(inText);
    entry->setShortcut(inKeys);
    entry->setStatusTip(inTip);
    connect(entry, &QAction::triggered, this, [this, inDo] {
        if (KyImageViewer* viewer = mLayout.activeViewer())
            inDo(*viewer);
    });
    return entry;
}

void KyViewerMenu::refresh()
{
    const KyImageViewer* viewer = mLayout.activeViewer();
    for (QAction* entry : mLayouts->actions())
        entry->setChecked(entry->data().toString() == mLayout.layout());
    for (QAction* entry : mOrientations->actions()) {
        const auto orientation = OvSlice::Orientation(entry->data().toInt());
        entry->setEnabled(viewer && viewer->canShow(orientation));
        entry->setChecked(viewer && viewer->orientation() == orientation);
    }
    for (QAction* entry : std::as_const(mForImages))
        entry->setEnabled(viewer && !viewer->isEmpty());
    mInvert->setChecked(viewer && viewer->isInverted());
    fillFusion();
}

/// The series of the studies that are open, those of the patient on show only.
void KyViewerMenu::fillFusion()
{
    mFusion->clear();
    KyImageViewer* viewer = mLayout.activeViewer();
    const auto layers = viewer ? viewer->layers() : std::vector<KyViewerLayer>();
    if (layers.empty())
        return;
    QAction* none = mFusion->addAction(tr("&Nothing"));
    none->setEnabled(layers.size() > 1);
    connect(none, &QAction::triggered, this, [this] {
        if (KyImageViewer* active = mLayout.activeViewer())
            active->fuse({});
    });
    mFusion->addSeparator();
    int number = 0;
    for (const auto* exams : {&KyStudySession::primary(), &KyStudySession::additional()}) {
        for (const auto& study : *exams) {
            if (!KyLoadHelper::isSamePatient(*study, *layers.front().study))
                continue;
            for (KyViewerLayer layer{.study = study}; layer.isValid(); ++layer.series) {
                if (!KyViewerLayout::hasImages(layer.dicomSeries()))
                    continue;
                const Ovg::DicomSeries& series = layer.dicomSeries();
                const QString text = tr("%1 %2 of %3")
                                         .arg(QString::fromStdString(series.modality))
                                         .arg(series.seriesNumber)
                                         .arg(OvDateFormatter::guiDate(study->studyDate()) +
                                              QLatin1Char(' ') + study->studyDescription());
                QAction* entry =
                    mFusion->addAction(QStringLiteral("&%1  %2").arg(++number).arg(withoutMnemonics(text)));
                connect(entry, &QAction::triggered, this, [this, layer] {
                    if (KyImageViewer* active = mLayout.activeViewer())
                        active->fuse(layer);
                });
            }
        }
    }
}
