#pragma once

#include "dcmtk/config/osconfig.h"
#include "dcmtk/dcmdata/dctk.h"

#include <QDir>
#include <QFileInfo>
#include <QString>
#include <QtTest>

#include <map>
#include <string>

/// Makes DICOM files with DCMTK for tests: a small but whole instance, whose elements a test then changes.
class DicomFileMaker
{
public:
    /// An instance of study, series and number; its UIDs are made of them.
    explicit DicomFileMaker(const std::string& inStudy = "1", const std::string& inSeries = "1",
                            int inNumber = 1)
    {
        const std::string series = "1.2.3." + inStudy + "." + inSeries;
        put(DCM_SOPClassUID, UID_CTImageStorage);
        put(DCM_SOPInstanceUID, series + "." + std::to_string(inNumber));
        put(DCM_StudyInstanceUID, "1.2.3." + inStudy);
        put(DCM_SeriesInstanceUID, series);
        put(DCM_SeriesNumber, inSeries);
        put(DCM_InstanceNumber, std::to_string(inNumber));
        put(DCM_Modality, "CT");
        put(DCM_PatientName, "Doe^Jane");
        put(DCM_PatientID, "P1");
    }

    DcmDataset& dataset() { return *mFile.getDataset(); }

    DicomFileMaker& put(const DcmTag& inTag, const std::string& inBytes)
    {
        dataset().putAndInsertString(inTag, inBytes.c_str());
        return *this;
    }

    DicomFileMaker& putPixels(size_t inCount)
    {
        const std::vector<Uint16> pixels(inCount, 7);
        dataset().putAndInsertUint16Array(DCM_PixelData, pixels.data(), static_cast<unsigned long>(inCount));
        return *this;
    }

    /// Writes the file, with the folders on the way, and gives its path.
    QString save(const QString& inPath, E_TransferSyntax inSyntax = EXS_LittleEndianExplicit,
                 E_EncodingType inLengths = EET_UndefinedLength, E_FileWriteMode inMode = EWM_fileformat)
    {
        QDir().mkpath(QFileInfo(inPath).path());
        const OFCondition saved = mFile.saveFile(QFile::encodeName(inPath).constData(), inSyntax, inLengths,
                                                 EGL_recalcGL, EPD_noChange, 0, 0, inMode);
        if (saved.bad())
            qFatal("%s: %s", qPrintable(inPath), saved.text());
        return inPath;
    }

private:
    DcmFileFormat mFile;
};

/// The folder of the DICOM files that come with Debian's python3-pydicom.
inline QString pydicomFolder()
{
    return QStringLiteral("/usr/lib/python3/dist-packages/pydicom/data");
}

#define SKIP_WITHOUT_PYDICOM()                                                                               \
    do {                                                                                                     \
        if (!QFileInfo::exists(pydicomFolder()))                                                             \
            QSKIP("needs the DICOM files of the package python3-pydicom");                                   \
    } while (false)
