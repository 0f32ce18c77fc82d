#include "SampleSeries.h"

#include "SampleUid.h"

#include "dcmtk/config/osconfig.h"
#include "dcmtk/dcmdata/dctk.h"

#include <QDir>

#include <cmath>
#include <utility>

namespace {

constexpr int edge = 128;          // pixels
constexpr double pixelSpacing = 3; // mm
constexpr int rescaleIntercept = -1024;

using Text = std::pair<DcmTagKey, std::string>;

bool inEllipse(double inX, double inY, double inCentreX, double inCentreY, double inRadiusX, double inRadiusY)
{
    return std::hypot((inX - inCentreX) / inRadiusX, (inY - inCentreY) / inRadiusY) <= 1;
}

/// Hounsfield units of the phantom at a point, in millimetres from its centre, z along the patient's axis.
int hounsfield(double inX, double inY, double inZ)
{
    const double lungScale = std::sqrt(std::max(0.0, 1 - std::pow(inZ / 140, 2)));
    const double toNodule = std::sqrt(std::pow(inX - 70, 2) + std::pow(inY + 20, 2) + std::pow(inZ, 2));
    if (!inEllipse(inX, inY, 0, 0, 170, 120))
        return -1000;
    if (toNodule <= 12)
        return 60;
    if (inEllipse(inX, inY, 0, 75, 18, 16))
        return 450;
    const bool lung = inEllipse(inX, inY, -80, -10, 55 * lungScale, 75 * lungScale) ||
                      inEllipse(inX, inY, 80, -10, 55 * lungScale, 75 * lungScale);
    return lung ? -820 : 45;
}

std::vector<Uint16> phantomSlice(double inZ)
{
    std::vector<Uint16> pixels;
    pixels.reserve(edge * edge);
    const double middle = (edge - 1) / 2.0;
    for (int row = 0; row < edge; ++row) {
        for (int column = 0; column < edge; ++column) {
            const int noise = (row * 31 + column * 17) % 13 - 6;
            const int value =
                hounsfield((column - middle) * pixelSpacing, (row - middle) * pixelSpacing, inZ) + noise;
            pixels.push_back(static_cast<Uint16>(std::max(0, value - rescaleIntercept)));
        }
    }
    return pixels;
}

std::string seriesKey(const SampleSeries& inSeries)
{
    return inSeries.study.folder + "/" + std::to_string(inSeries.number);
}

/// A decimal string: at most one digit behind the point, as all lengths here have.
std::string decimal(double inValue)
{
    return QString::number(inValue, 'f', 1).toStdString();
}

/// \a inText in the character set of \a inStudy. The sample has only characters that Latin-1 has too.
std::string encoded(const SampleStudy& inStudy, const std::string& inText)
{
    return inStudy.characterSet == "ISO_IR 192" ? inText
                                                : QString::fromStdString(inText).toLatin1().toStdString();
}

std::vector<Text> patientAndStudy(const SampleStudy& inStudy)
{
    return {{DCM_SpecificCharacterSet, inStudy.characterSet},
            {DCM_PatientName, encoded(inStudy, inStudy.patientName)},
            {DCM_PatientID, inStudy.patientId},
            {DCM_PatientBirthDate, inStudy.birthDate},
            {DCM_PatientSex, inStudy.sex},
            {DCM_PatientAge, inStudy.age},
            {DCM_StudyInstanceUID, sampleUid(inStudy.folder)},
            {DCM_StudyDate, inStudy.date},
            {DCM_StudyTime, inStudy.time},
            {DCM_StudyDescription, encoded(inStudy, inStudy.description)},
            {DCM_StudyID, inStudy.studyId},
            {DCM_AccessionNumber, inStudy.accessionNumber},
            {DCM_RETIRED_StudyStatusID, inStudy.status},
            {DCM_ReferringPhysicianName, ""},
            {DCM_TimezoneOffsetFromUTC, "+0100"}};
}

std::vector<Text> seriesAndEquipment(const SampleSeries& inSeries)
{
    return {{DCM_Modality, "CT"},
            {DCM_SeriesInstanceUID, sampleUid(seriesKey(inSeries))},
            {DCM_SeriesNumber, std::to_string(inSeries.number)},
            {DCM_SeriesDate, inSeries.study.date},
            {DCM_SeriesTime, inSeries.study.time},
            {DCM_SeriesDescription, encoded(inSeries.study, inSeries.description)},
            {DCM_BodyPartExamined, "CHEST"},
            {DCM_PatientPosition, "HFS"},
            {DCM_ProtocolName, "THORAX"},
            {DCM_FrameOfReferenceUID, sampleUid(inSeries.study.folder + "/frame")},
            {DCM_PositionReferenceIndicator, ""},
            {DCM_Manufacturer, "kysample"},
            {DCM_ManufacturerModelName, "Synthetic phantom"},
            {DCM_DeviceSerialNumber, "1"},
            {DCM_SoftwareVersions, "1"},
            {DCM_InstitutionName, "Sample Hospital"},
            {DCM_StationName, "CT1"}};
}

std::vector<Text> acquisition(const SampleSeries& inSeries)
{
    return {{DCM_ImageType, "ORIGINAL\\PRIMARY\\AXIAL"},
            {DCM_AcquisitionNumber, "1"},
            {DCM_AcquisitionDate, inSeries.study.date},
            {DCM_AcquisitionTime, inSeries.study.time},
            {DCM_ContentDate, inSeries.study.date},
            {DCM_ContentTime, inSeries.study.time},
            {DCM_KVP, "120"},
            {DCM_XRayTubeCurrent, "220"},
            {DCM_ExposureTime, "500"},
            {DCM_ConvolutionKernel, inSeries.kernel},
            {DCM_GantryDetectorTilt, "0"},
            {DCM_ReconstructionDiameter, decimal(edge * pixelSpacing)},
            {DCM_SliceThickness, decimal(inSeries.spacing)},
            {DCM_WindowCenter, inSeries.windowCentre},
            {DCM_WindowWidth, inSeries.windowWidth},
            {DCM_RescaleIntercept, std::to_string(rescaleIntercept)},
            {DCM_RescaleSlope, "1"},
            {DCM_RescaleType, "HU"}};
}

std::vector<Text> slice(const SampleSeries& inSeries, int inSlice)
{
    const double position = inSeries.firstPosition + inSlice * inSeries.spacing;
    const std::string corner = decimal(-(edge - 1) / 2.0 * pixelSpacing);
    const std::string spacing = decimal(pixelSpacing);
    return {{DCM_SOPClassUID, UID_CTImageStorage},
            {DCM_SOPInstanceUID, sampleUid(seriesKey(inSeries) + "/" + std::to_string(inSlice + 1))},
            {DCM_InstanceNumber, std::to_string(inSlice + 1)},
            {DCM_ImagePositionPatient, corner + "\\" + corner + "\\" + decimal(position)},
            {DCM_ImageOrientationPatient, "1\\0\\0\\0\\1\\0"},
            {DCM_PixelSpacing, spacing + "\\" + spacing},
            {DCM_SliceLocation, decimal(position)},
            {DCM_PhotometricInterpretation, "MONOCHROME2"}};
}

void putTexts(DcmItem& ioItem, const std::vector<Text>& inTexts)
{
    for (const auto& [tag, text] : inTexts)
        ioItem.putAndInsertString(tag, text.c_str());
}

void putRequest(DcmDataset& ioDataset, const SampleStudy& inStudy)
{
    DcmItem* item = nullptr;
    if (ioDataset.findOrCreateSequenceItem(DCM_RequestAttributesSequence, item).bad())
        return;
    putTexts(*item, {{DCM_RequestedProcedureID, "RP" + inStudy.accessionNumber},
                     {DCM_ScheduledProcedureStepID, "SPS" + inStudy.accessionNumber},
                     {DCM_ScheduledProcedureStepDescription, "CT Thorax"}});
}

void putPixels(DcmDataset& ioDataset, double inZ)
{
    const std::pair<DcmTagKey, int> numbers[] = {
        {DCM_SamplesPerPixel, 1}, {DCM_Rows, edge},  {DCM_Columns, edge},         {DCM_BitsAllocated, 16},
        {DCM_BitsStored, 12},     {DCM_HighBit, 11}, {DCM_PixelRepresentation, 0}};
    for (const auto& [tag, number] : numbers)
        ioDataset.putAndInsertUint16(tag, static_cast<Uint16>(number));
    const std::vector<Uint16> pixels = phantomSlice(inZ);
    ioDataset.putAndInsertUint16Array(DCM_PixelData, pixels.data(),
                                      static_cast<unsigned long>(pixels.size()));
}

} // namespace

QString writeSampleSeries(const SampleSeries& inSeries, const QString& inFolder)
{
    const QDir folder(inFolder + QLatin1Char('/') + QString::fromStdString(seriesKey(inSeries)));
    if (!QDir().mkpath(folder.path()))
        return folder.path() + QLatin1String(": cannot be made");
    for (int i = 0; i < inSeries.slices; ++i) {
        DcmFileFormat file;
        DcmDataset& dataset = *file.getDataset();
        putTexts(dataset, patientAndStudy(inSeries.study));
        putTexts(dataset, seriesAndEquipment(inSeries));
        putTexts(dataset, acquisition(inSeries));
        putTexts(dataset, slice(inSeries, i));
        putRequest(dataset, inSeries.study);
        putPixels(dataset, inSeries.firstPosition + i * inSeries.spacing);
        const QString path = folder.filePath(QStringLiteral("IM%1").arg(i + 1, 4, 10, QLatin1Char('0')));
        const OFCondition result =
            file.saveFile(QFile::encodeName(path).constData(), EXS_LittleEndianExplicit);
        if (result.bad())
            return path + QLatin1String(": ") + QString::fromLatin1(result.text());
    }
    return {};
}
