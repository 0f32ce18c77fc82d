#pragma once

#include <QString>

#include <string>
#include <vector>

/// What the instances of one sample patient and study have in common. Texts are UTF-8.
struct SampleStudy
{
    std::string folder; ///< Below the folder of the whole sample, with slashes.
    std::string characterSet;
    std::string patientName; ///< In UTF-8; written in \a characterSet, which is ISO_IR 100 or ISO_IR 192.
    std::string patientId;
    std::string birthDate;
    std::string sex;
    std::string age;
    std::string date;
    std::string time;
    std::string description;
    std::string accessionNumber;
    std::string studyId;
    std::string status;
};

/// One series of a sample study.
struct SampleSeries
{
    SampleStudy study;
    int number = 1;
    std::string description;
    std::string kernel;
    std::string windowCentre; ///< Hounsfield units as DS.
    std::string windowWidth;  ///< As windowCentre.
    double firstPosition = 0; ///< Millimetres along the patient's axis.
    double spacing = 5;       ///< Millimetres between slices, which also is their thickness.
    int slices = 20;
    bool isPet = false;        ///< A PET series, whose values are 1000 times the uptake; else CT.
    int edge = 256;            ///< Pixels.
    double pixelSpacing = 1.5; ///< Millimetres.
    double noise = 12;         ///< At most, in Hounsfield units.
};

/// Writes \a inSeries as CT or PET Image Storage instances of 16 bit below \a inFolder, one file for each
/// slice. The picture is that of SamplePhantom.
///
/// Returns an empty text, or one line that says which file could not be written.
QString writeSampleSeries(const SampleSeries& inSeries, const QString& inFolder);
