#pragma once

#include "dcmtk/config/osconfig.h"
#include "dcmtk/dcmdata/dctk.h"

#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <array>
#include <functional>
#include <string>
#include <vector>

/// Makes the files of a series of images for tests: small axial CT images whose pixels a function gives, and
/// whose elements a test may change. Who includes it links DCMTK::dcmdata.
struct DicomSeriesMaker
{
    using Vector = std::array<double, 3>;

    int columns = 4;
    int rows = 3;
    int images = 5;
    double columnSpacing = 0.5;
    double rowSpacing = 0.75;
    Vector first{-10, -20, 30};
    Vector row{1, 0, 0};
    Vector column{0, 1, 0};
    Vector step{0, 0, 2}; ///< From image to image.
    bool isSigned = false;
    int bitsStored = 16;
    std::string series = "1";
    std::string study = "1";
    std::string frameOfReference = "1.2.3.9";

    /// The stored value at a column, a row and an image.
    std::function<int(int, int, int)> pixel = [](int c, int r, int i) { return 100 * i + 10 * r + c; };
    /// Changes the elements of an image, counted from 0, before it is written.
    std::function<void(int, DcmDataset&)> adjust;

    static std::string decimals(const std::vector<double>& inNumbers)
    {
        QStringList texts;
        for (const double number : inNumbers)
            texts += QString::number(number, 'g', 10);
        return texts.join(QLatin1Char('\\')).toStdString();
    }

    static void put(DcmDataset& ioSet, const DcmTagKey& inKey, const std::string& inText)
    {
        ioSet.putAndInsertString(inKey, inText.c_str());
    }

    void fill(int inImage, DcmDataset& ioSet) const
    {
        const std::string number = std::to_string(inImage + 1);
        put(ioSet, DCM_SOPClassUID, UID_CTImageStorage);
        put(ioSet, DCM_SOPInstanceUID, "1.2.3." + study + "." + series + "." + number);
        put(ioSet, DCM_StudyInstanceUID, "1.2.3." + study);
        put(ioSet, DCM_SeriesInstanceUID, "1.2.3." + study + "." + series);
        put(ioSet, DCM_Modality, "CT");
        put(ioSet, DCM_PatientName, "Doe^Jane");
        put(ioSet, DCM_PatientID, "P1");
        put(ioSet, DCM_StudyDate, "20240311");
        put(ioSet, DCM_SeriesNumber, series);
        put(ioSet, DCM_SeriesDescription, "Series " + series);
        put(ioSet, DCM_InstanceNumber, number);
        put(ioSet, DCM_FrameOfReferenceUID, frameOfReference);
        Vector place = first;
        for (size_t i = 0; i < 3; ++i)
            place[i] += step[i] * inImage;
        put(ioSet, DCM_ImagePositionPatient, decimals({place[0], place[1], place[2]}));
        put(ioSet, DCM_ImageOrientationPatient,
            decimals({row[0], row[1], row[2], column[0], column[1], column[2]}));
        put(ioSet, DCM_PixelSpacing, decimals({rowSpacing, columnSpacing}));
        put(ioSet, DCM_PhotometricInterpretation, "MONOCHROME2");
        ioSet.putAndInsertUint16(DCM_SamplesPerPixel, 1);
        ioSet.putAndInsertUint16(DCM_Rows, Uint16(rows));
        ioSet.putAndInsertUint16(DCM_Columns, Uint16(columns));
        ioSet.putAndInsertUint16(DCM_BitsAllocated, 16);
        ioSet.putAndInsertUint16(DCM_BitsStored, Uint16(bitsStored));
        ioSet.putAndInsertUint16(DCM_HighBit, Uint16(bitsStored - 1));
        ioSet.putAndInsertUint16(DCM_PixelRepresentation, isSigned ? 1 : 0);
        putPixels(ioSet, columns, rows, [&](int c, int r) { return pixel(c, r, inImage); });
    }

    static void putPixels(DcmDataset& ioSet, int inColumns, int inRows,
                          const std::function<int(int, int)>& inPixel)
    {
        std::vector<Uint16> pixels;
        for (int r = 0; r < inRows; ++r) {
            for (int c = 0; c < inColumns; ++c)
                pixels.push_back(Uint16(inPixel(c, r)));
        }
        ioSet.putAndInsertUint16Array(DCM_PixelData, pixels.data(),
                                      static_cast<unsigned long>(pixels.size()));
    }

    static QString saveFile(DcmFileFormat& ioFile, const QString& inPath,
                            E_TransferSyntax inSyntax = EXS_LittleEndianExplicit)
    {
        const OFCondition saved = ioFile.saveFile(QFile::encodeName(inPath).constData(), inSyntax);
        if (saved.bad())
            qFatal("%s: %s", qPrintable(inPath), saved.text());
        return inPath;
    }

    /// Writes the files, and gives their paths.
    QStringList save(const QString& inFolder, E_TransferSyntax inSyntax = EXS_LittleEndianExplicit) const
    {
        QDir().mkpath(inFolder);
        QStringList paths;
        for (int i = 0; i < images; ++i) {
            DcmFileFormat file;
            fill(i, *file.getDataset());
            if (adjust)
                adjust(i, *file.getDataset());
            paths += saveFile(
                file, QStringLiteral("%1/%2-%3.dcm").arg(inFolder, QString::fromStdString(series)).arg(i),
                inSyntax);
        }
        return paths;
    }
};
