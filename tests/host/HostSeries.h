#pragma once

#include <support/DicomSeriesMaker.h>

#include <common/KyImageViewer.h>
#include <kybase/KyLoadHelper.h>
#include <ovwebservice/FolderStudySource.h>

#include <QTemporaryDir>

#include <vector>

/// Series of test images in a folder of their own, as studies of a session.
class HostSeries
{
public:
    /// Adds the files of a series, before studies() is asked for.
    void add(const DicomSeriesMaker& inMaker) { inMaker.save(mFolder.filePath(inMaker.study.c_str())); }

    const QString path() const { return mFolder.path(); }

    /// In the order of their patients and dates.
    KyLoadHelper::Exams studies() const { return Ovg::FolderStudySource(mFolder.path()).load().studies; }

    /// Makes them the primary ones of the session.
    KyLoadHelper::Exams open() const
    {
        const auto all = studies();
        KySessionContext::currentInstance()->component<KyLoadHelper>(true)->setPrimaryExams(all);
        return all;
    }

private:
    QTemporaryDir mFolder;
};

/// A CT of 16 x 12 pixels and 10 images whose values are a field of the place: 10 for each column, 3 for each
/// row, 7 for each image.
inline DicomSeriesMaker ctMaker()
{
    DicomSeriesMaker maker;
    maker.columns = 16;
    maker.rows = 12;
    maker.images = 10;
    maker.columnSpacing = maker.rowSpacing = 1;
    maker.first = {0, 0, 0};
    maker.step = {0, 0, 1};
    maker.pixel = [](int c, int r, int i) { return 10 * c + 3 * r + 7 * i; };
    maker.adjust = [](int inImage, DcmDataset& ioSet) {
        DicomSeriesMaker::put(ioSet, DCM_WindowCenter, "128");
        DicomSeriesMaker::put(ioSet, DCM_WindowWidth, "256");
        DicomSeriesMaker::put(ioSet, DCM_StudyDescription, "Chest");
        DicomSeriesMaker::put(ioSet, DCM_PatientBirthDate, "19580412");
        DicomSeriesMaker::put(ioSet, DCM_PatientSex, "F");
        DicomSeriesMaker::put(ioSet, DCM_SliceLocation, std::to_string(inImage));
    };
    return maker;
}

/// A second, coarser series in the same place.
inline DicomSeriesMaker petMaker()
{
    DicomSeriesMaker maker = ctMaker();
    maker.series = "2";
    maker.columns = 8;
    maker.rows = 6;
    maker.images = 4;
    maker.columnSpacing = maker.rowSpacing = 2;
    maker.step = {0, 0, 3};
    maker.pixel = [](int c, int r, int i) { return 20 * c + 6 * r + 21 * i; };
    maker.adjust = [](int, DcmDataset& ioSet) { DicomSeriesMaker::put(ioSet, DCM_Modality, "PT"); };
    return maker;
}
