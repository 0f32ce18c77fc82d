#include "SampleSeries.h"

#include "SamplePhantom.h"
#include "SampleUid.h"

#include "dcmtk/config/osconfig.h"
#include "dcmtk/dcmdata/dctk.h"

#include <QDir>

#include <cmath>
#include <utility>

namespace {

constexpr int rescaleIntercept = -1024;
/// The rescale slope of a PET slice: each has its own, as scanners write it.
double petSlope(int inSlice)
{
    return 0.5 + inSlice % 4 * 0.125;
}

using Text = std::pair<DcmTagKey, std::string>;

std::vector<Uint16> phantomSlice(const SampleSeries& inSeries, int inSlice)
{
    // A PET has a coarse look; CT edges are about a pixel wide.
    const SamplePhantom phantom(inSeries.isPet ? 11 : inSeries.pixelSpacing);
    const double z = inSeries.firstPosition + inSlice * inSeries.spacing;
    const double middle = (inSeries.edge - 1) / 2.0;
    std::vector<Uint16> pixels;
    pixels.reserve(std::size_t(inSeries.edge) * std::size_t(inSeries.edge));
    for (int row = 0; row < inSeries.edge; ++row) {
        for (int column = 0; column < inSeries.edge; ++column) {
            const double x = (column - middle) * inSeries.pixelSpacing;
            const double y = (row - middle) * inSeries.pixelSpacing;
            const double noise = SamplePhantom::noise(column, row, inSlice);
            const double uptake = inSeries.isPet ? 1000 * phantom.uptake(x, y, z) * (1 + 0.08 * noise) : 0;
            const double value =
                inSeries.isPet ? uptake / petSlope(inSlice)
                               : phantom.hounsfield(x, y, z) + inSeries.noise * noise - rescaleIntercept;
            pixels.push_back(static_cast<Uint16>(std::max(0.0, value)));
        }
    }
    return pixels;
}

std::string seriesKey(const SampleSeries& inSeries)
{
    return inSeries.study.folder + "/" + std::to_string(inSeries.number);
}

/// A decimal string: at most two digits behind the point, as all lengths here have.
std::string decimal(double inValue)
{
    return QString::number(inValue, 'f', 2).toStdString();
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
    return {{DCM_Modality, inSeries.isPet ? "PT" : "CT"},
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
            {DCM_SliceThickness, decimal(inSeries.spacing)},
            {DCM_ReconstructionDiameter, decimal(inSeries.edge * inSeries.pixelSpacing)}};
}

std::vector<Text> tomography(const SampleSeries& inSeries)
{
    return {{DCM_SOPClassUID, UID_CTImageStorage},
            {DCM_KVP, "120"},
            {DCM_XRayTubeCurrent, "220"},
            {DCM_ExposureTime, "500"},
            {DCM_ConvolutionKernel, inSeries.kernel},
            {DCM_GantryDetectorTilt, "0"},
            {DCM_WindowCenter, inSeries.windowCentre},
            {DCM_WindowWidth, inSeries.windowWidth},
            {DCM_RescaleIntercept, std::to_string(rescaleIntercept)},
            {DCM_RescaleSlope, "1"},
            {DCM_RescaleType, "HU"}};
}

std::vector<Text> emission(const SampleSeries& inSeries, int inSlice)
{
    return {{DCM_SOPClassUID, UID_PositronEmissionTomographyImageStorage},
            {DCM_Units, "BQML"},
            {DCM_SeriesType, "WHOLE BODY\\IMAGE"},
            {DCM_CountsSource, "EMISSION"},
            {DCM_CorrectedImage, "DECY\\ATTN\\SCAT"},
            {DCM_DecayCorrection, "START"},
            {DCM_NumberOfSlices, std::to_string(inSeries.slices)},
            {DCM_ImageIndex, std::to_string(inSlice + 1)},
            {DCM_RescaleIntercept, "0"},
            {DCM_RescaleSlope, QString::number(petSlope(inSlice)).toStdString()}};
}

std::vector<Text> slice(const SampleSeries& inSeries, int inSlice)
{
    const double position = inSeries.firstPosition + inSlice * inSeries.spacing;
    const std::string corner = decimal(-(inSeries.edge - 1) / 2.0 * inSeries.pixelSpacing);
    const std::string spacing = decimal(inSeries.pixelSpacing);
    return {{DCM_SOPInstanceUID, sampleUid(seriesKey(inSeries) + "/" + std::to_string(inSlice + 1))},
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

void putPixels(DcmDataset& ioDataset, const SampleSeries& inSeries, int inSlice)
{
    const int bits = inSeries.isPet ? 16 : 12;
    const std::pair<DcmTagKey, int> numbers[] = {{DCM_SamplesPerPixel, 1},     {DCM_Rows, inSeries.edge},
                                                 {DCM_Columns, inSeries.edge}, {DCM_BitsAllocated, 16},
                                                 {DCM_BitsStored, bits},       {DCM_HighBit, bits - 1},
                                                 {DCM_PixelRepresentation, 0}};
    for (const auto& [tag, number] : numbers)
        ioDataset.putAndInsertUint16(tag, static_cast<Uint16>(number));
    const std::vector<Uint16> pixels = phantomSlice(inSeries, inSlice);
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
        putTexts(dataset, inSeries.isPet ? emission(inSeries, i) : tomography(inSeries));
        putTexts(dataset, slice(inSeries, i));
        putRequest(dataset, inSeries.study);
        putPixels(dataset, inSeries, i);
        const QString path = folder.filePath(QStringLiteral("IM%1").arg(i + 1, 4, 10, QLatin1Char('0')));
        const OFCondition result =
            file.saveFile(QFile::encodeName(path).constData(), EXS_LittleEndianExplicit);
        if (result.bad())
            return path + QLatin1String(": ") + QString::fromLatin1(result.text());
    }
    return {};
}
