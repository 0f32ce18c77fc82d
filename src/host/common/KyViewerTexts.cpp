#include "KyViewerTexts.h"

#include "KyImageViewer.h"
#include "KyPatientName.h"

#include <ovbase/OvDateFormatter.h>
#include <ovwebservice/DicomHeader.h>

#include <QtCore/QLocale>

#include <cmath>

namespace {

void add(QStringList& ioLines, const QString& inLine)
{
    if (!inLine.trimmed().isEmpty())
        ioLines += inLine.trimmed();
}

/// With as many digits as the size of the number is worth.
QString number(double inNumber)
{
    const double size = std::fabs(inNumber);
    const int digits = size >= 100 || inNumber == std::round(inNumber) ? 0 : size >= 10 ? 1 : 2;
    if (size != 0 && size < 0.01)
        return QLocale::c().toString(inNumber, 'g', 3);
    QLocale locale = QLocale::c();
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale.toString(inNumber, 'f', digits);
}

QString describe(const Ovg::DicomSeries& inSeries, const OvImageVolume* inVolume)
{
    const Ovg::DicomHeader* header = inVolume ? inVolume->header(0) : nullptr;
    const QString description = header ? header->value({0x0008, 0x103E}).toString() : QString();
    const QString title =
        QStringLiteral("%1 %2").arg(QString::fromStdString(inSeries.modality)).arg(inSeries.seriesNumber);
    return description.isEmpty() ? title : title + QStringLiteral(" · ") + description;
}

void addPatient(const Ovg::DicomDirectoryEntry& inStudy, QStringList& outLines)
{
    static const Ovg::DicomTagPath birthDate(0x0010, 0x0030);
    static const Ovg::DicomTagPath sex(0x0010, 0x0040);
    add(outLines, KyPatientName::forDisplay(inStudy.patientName()));
    add(outLines, inStudy.patientId());
    add(outLines, OvDateFormatter::guiDate(inStudy.value(birthDate).toDate()) + QLatin1Char(' ') +
                      inStudy.value(sex).toString());
}

QString orientationName(OvSlice::Orientation inOrientation)
{
    switch (inOrientation) {
    case OvSlice::Axial:
        return KyViewerTexts::tr("axial");
    case OvSlice::Sagittal:
        return KyViewerTexts::tr("sagittal");
    case OvSlice::Coronal:
        return KyViewerTexts::tr("coronal");
    case OvSlice::Oblique:
        return KyViewerTexts::tr("oblique");
    case OvSlice::Unknown:
        break;
    }
    return QString();
}

void addPlane(const KyImageViewer& inViewer, KyViewerTexts& outTexts)
{
    const OvPlane plane = inViewer.imageSlice()->plane();
    const OvVolumeContent& content = plane.content();
    outTexts.lowerLeft += (content.geometry().isVolume() ? KyViewerTexts::tr("Slice %1 / %2")
                                                         : KyViewerTexts::tr("Image %1 / %2"))
                              .arg(plane.number() + 1)
                              .arg(inViewer.planeCount());
    QString place = orientationName(plane.orientation());
    if (plane.hasPlace()) {
        const OvVector3 normal = plane.right().cross(plane.down());
        int axis = 2;
        for (const int other : {0, 1})
            axis = std::fabs(normal.along(other)) > std::fabs(normal.along(axis)) ? other : axis;
        place += QStringLiteral(" %1 %2 mm")
                     .arg(QLatin1Char("xyz"[axis]))
                     .arg(plane.centre().along(axis), 0, 'f', 1);
    }
    add(outTexts.lowerLeft, place);
    if (!content.image(plane.image() < 0 ? 0 : plane.image()).isColour()) {
        const OvWindow window = inViewer.window(0);
        outTexts.lowerLeft +=
            KyViewerTexts::tr("C %1  W %2").arg(number(window.centre), number(window.width));
    }
    outTexts.left = OvPlane::letters(plane.right() * -1);
    outTexts.right = OvPlane::letters(plane.right());
    outTexts.upper = OvPlane::letters(plane.down() * -1);
    outTexts.lower = OvPlane::letters(plane.down());
}

} // namespace

KyViewerTexts KyViewerTexts::of(const KyImageViewer& inViewer)
{
    KyViewerTexts texts;
    texts.hint = inViewer.contextToolBar()->displayHint();
    const auto layers = inViewer.layers();
    if (layers.empty())
        return texts;
    texts.message = inViewer.message();
    texts.notices = inViewer.notices();
    const Ovg::DicomDirectoryEntry& study = *layers.front().study;
    addPatient(study, texts.upperLeft);
    add(texts.upperRight, study.studyDescription());
    add(texts.upperRight, OvDateFormatter::guiDate(study.studyDate()));
    add(texts.upperRight, describe(layers.front().dicomSeries(), inViewer.seriesVolume(0)->present()));
    if (inViewer.imageSlice())
        addPlane(inViewer, texts);
    if (layers.size() > 1) {
        add(texts.lowerRight, describe(layers[1].dicomSeries(), inViewer.seriesVolume(1)->present()));
        texts.lowerRight += tr("Fusion %1 %").arg(std::lround(inViewer.fusionWeight() * 100));
    }
    for (int layer = 0; layer < int(layers.size()); ++layer) {
        const KySeriesVolume* volume = inViewer.seriesVolume(layer);
        if (volume->isLoading() && volume->total() > 0)
            texts.lowerRight += tr("Reading %1 of %2").arg(volume->done()).arg(volume->total());
    }
    return texts;
}
