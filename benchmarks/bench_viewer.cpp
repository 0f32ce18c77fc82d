// Viewers: tags of the image on show, scrolling through a series, and reading it.

#include "RatioReport.h"

#include <common/KyHostPlatform.h>
#include <common/KyViewerLayout.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptViewer.h>
#include <kyworkstation/KyImageViewerWidget.h>
#include <support/DicomSeriesMaker.h>

#include <kybase/KyLoadHelper.h>
#include <ovwebservice/FolderStudySource.h>

#include <benchmark/benchmark.h>

#include <QtCore/QTemporaryDir>
#include <QtGui/QPainter>
#include <QtGui/QWheelEvent>
#include <QtWidgets/QApplication>

#include <cmath>

namespace {

constexpr int Edge = 512;
constexpr int Images = 300;
const QSize WindowSize(800, 700);

/// A series of that size, as a scanner would send it.
QStringList writeSeries(const QString& inFolder)
{
    DicomSeriesMaker maker;
    maker.columns = maker.rows = Edge;
    maker.images = Images;
    maker.step = {0, 0, 1};
    maker.bitsStored = 12;
    maker.pixel = [](int c, int r, int i) { return (c * 7 + r * 5 + i * 11) & 0xFFF; };
    maker.adjust = [](int, DcmDataset& ioSet) {
        DicomSeriesMaker::put(ioSet, DCM_RescaleSlope, "1");
        DicomSeriesMaker::put(ioSet, DCM_RescaleIntercept, "-1024");
        DicomSeriesMaker::put(ioSet, DCM_WindowCenter, "1000");
        DicomSeriesMaker::put(ioSet, DCM_WindowWidth, "2000");
    };
    return maker.save(inFolder);
}

/// DCMTK's own way to a series in memory: load each file, get its pixels, keep them.
void loadByDcmtk(const QStringList& inPaths)
{
    std::vector<std::vector<Uint16>> images;
    for (const QString& path : inPaths) {
        DcmFileFormat file;
        const Uint16* pixels = nullptr;
        unsigned long count = 0;
        if (file.loadFile(path.toLocal8Bit().constData()).good() &&
            file.getDataset()->findAndGetUint16Array(DCM_PixelData, pixels, &count).good())
            images.emplace_back(pixels, pixels + count);
    }
    benchmark::DoNotOptimize(images);
}

void addLoading(const QStringList& inPaths)
{
    benchmark::RegisterBenchmark("series of 300 images read", [=](benchmark::State& state) {
        for (auto _ : state) {
            const auto content = OvVolumeContent::read(inPaths);
            content->loadPixels();
            benchmark::DoNotOptimize(content->pixels(Images - 1));
        }
    })->UseRealTime();
    benchmark::RegisterBenchmark("series of 300 images read/yardstick", [=](benchmark::State& state) {
        for (auto _ : state)
            loadByDcmtk(inPaths);
    })->UseRealTime();
}

/// Converts one image after the other by a look-up table and paints it, and nothing else.
class PlainImages final : public QWidget
{
public:
    explicit PlainImages(const OvVolumeContent& inContent)
        : mContent(inContent)
        , mImage(Edge, Edge, QImage::Format_RGB32)
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
        for (int i = 0; i < int(mTable.size()); ++i) {
            const int level = std::clamp((i - 1024) * 255 / 2000, 0, 255);
            mTable[size_t(i)] = qRgb(level, level, level);
        }
    }

    void next() { mNumber = (mNumber + 1) % Images; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        const auto* from = mContent.pixels(mNumber)->as<quint16>();
        auto* to = reinterpret_cast<QRgb*>(mImage.bits());
        for (int i = 0; i < Edge * Edge; ++i)
            to[i] = mTable[from[i]];
        QPainter painter(this);
        painter.fillRect(rect(), Qt::black);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        const int edge = std::min(width(), height());
        painter.drawImage(QRectF((width() - edge) / 2.0, (height() - edge) / 2.0, edge, edge), mImage);
    }

private:
    const OvVolumeContent& mContent;
    QImage mImage;
    std::vector<QRgb> mTable = std::vector<QRgb>(4096);
    int mNumber = 0;
};

void addScrolling(KyImageViewerWidget& ioWidget, PlainImages& ioPlain)
{
    benchmark::RegisterBenchmark("image scrolled to and painted<=1.43", [&](benchmark::State& state) {
        int notches = -1;
        for (auto _ : state) {
            KyImageViewer& viewer = ioWidget.viewer();
            if (viewer.planeNumber() == Images - 1 || viewer.planeNumber() == 0)
                notches = viewer.planeNumber() == 0 ? -1 : 1;
            const QPointF place(100, 100);
            QWheelEvent event(place, place, QPoint(), QPoint(0, 120 * notches), Qt::NoButton, Qt::NoModifier,
                              Qt::NoScrollPhase, false);
            QApplication::sendEvent(&ioWidget, &event);
            ioWidget.repaint();
        }
    });
    benchmark::RegisterBenchmark("image scrolled to and painted/yardstick", [&](benchmark::State& state) {
        for (auto _ : state) {
            ioPlain.next();
            ioPlain.repaint();
        }
    });
}

void addTags(KyScriptEngine& ioEngine)
{
    for (const char* name : {"DICOM.PatientName", "DICOM.InstanceNumber", "DICOM.StudyDate"}) {
        const std::string subject = std::string("1000 x viewer.getTag ") + name;
        const auto loop = [name](const char* inObject) {
            return QStringLiteral("for (var i = 0; i < 1000; ++i) %1.getTag('%2')")
                .arg(QLatin1String(inObject), QLatin1String(name));
        };
        benchmark::RegisterBenchmark((subject + "<=1.5").c_str(), [&ioEngine, loop](benchmark::State& state) {
            for (auto _ : state)
                ioEngine.QJSEngine::evaluate(loop("viewer"));
        });
        benchmark::RegisterBenchmark((subject + "/yardstick").c_str(),
                                     [&ioEngine, loop](benchmark::State& state) {
                                         for (auto _ : state)
                                             ioEngine.QJSEngine::evaluate(loop("study"));
                                     });
    }
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const QTemporaryDir folder;
    const QStringList paths = writeSeries(folder.path());
    KyHostPlatform platform{KyHostOptions()};
    const auto studies = Ovg::FolderStudySource(folder.path()).load().studies;
    KySessionContext::currentInstance()->component<KyLoadHelper>(true)->setPrimaryExams(studies);

    const RnHandle<KyImageViewer> viewer(new KyImageViewer(1, KySeriesVolume::Reading::InBackground));
    viewer->open(KyViewerLayout::firstSeries(studies.at(0)));
    while (viewer->seriesVolume(0)->isLoading())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    KyImageViewerWidget widget(*viewer);
    PlainImages plain(viewer->imageVolume(0)->content());
    for (QWidget* window : {static_cast<QWidget*>(&widget), static_cast<QWidget*>(&plain)}) {
        window->resize(WindowSize);
        window->show();
    }
    QCoreApplication::processEvents();

    KyScriptEngine engine(nullptr, -1);
    KyScriptViewer script(&engine, viewer.get());
    QJSEngine::setObjectOwnership(&script, QJSEngine::CppOwnership);
    engine.globalObject().setProperty(QStringLiteral("viewer"), engine.newQObject(&script));
    engine.QJSEngine::evaluate(QStringLiteral("var study = StudyList.get('PRIMARY_STUDIES')[0]"));

    addTags(engine);
    addScrolling(widget, plain);
    addLoading(paths);
    return runWithRatios(argc, argv);
}
