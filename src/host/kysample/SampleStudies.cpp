#include "SampleStudies.h"

#include <algorithm>

namespace {

SampleStudy muellerBaseline()
{
    return {.folder = "mueller/2024-03-11",
            .characterSet = "ISO_IR 192",
            .patientName = "Müller^Änne",
            .patientId = "SAMPLE-1001",
            .birthDate = "19580412",
            .sex = "F",
            .age = "065Y",
            .date = "20240311",
            .time = "084512.375",
            .description = "CT Thorax nativ, Erstuntersuchung",
            .accessionNumber = "A240311001",
            .studyId = "1",
            .status = "COMPLETED"};
}

SampleStudy muellerFollowUp()
{
    return {.folder = "mueller/2025-01-20",
            .characterSet = "ISO_IR 192",
            .patientName = "Müller^Änne",
            .patientId = "SAMPLE-1001",
            .birthDate = "19580412",
            .sex = "F",
            .age = "066Y",
            .date = "20250120",
            .time = "101507.250",
            .description = "CT Thorax, Verlauf für Rundherd",
            .accessionNumber = "A250120007",
            .studyId = "2",
            .status = "SCHEDULED"};
}

SampleStudy soerensen()
{
    return {.folder = "soerensen/2025-01-21",
            .characterSet = "ISO_IR 100",
            .patientName = "Sørensen^Bjørn",
            .patientId = "SAMPLE-1002",
            .birthDate = "19710930",
            .sex = "M",
            .age = "053Y",
            .date = "20250121",
            .time = "143000.5",
            .description = "CT Thorax",
            .accessionNumber = "A250121003",
            .studyId = "1",
            .status = "PRELIMINARY"};
}

SampleSeries softTissue(const SampleStudy& inStudy, int inNumber)
{
    return {.study = inStudy,
            .number = inNumber,
            .description = "Weichteil 5 mm",
            .kernel = "SOFT",
            .windowCentre = "40",
            .windowWidth = "400",
            .firstPosition = -50};
}

SampleSeries lung(const SampleStudy& inStudy, int inNumber)
{
    return {.study = inStudy,
            .number = inNumber,
            .description = "Lunge 2,5 mm",
            .kernel = "LUNG",
            .windowCentre = "-600",
            .windowWidth = "1600",
            .firstPosition = -25,
            .spacing = 2.5,
            .noise = 40};
}

/// A PET in the same place as the CT of its study.
SampleSeries emission(const SampleStudy& inStudy, int inNumber)
{
    return {.study = inStudy,
            .number = inNumber,
            .description = "FDG PET",
            .kernel = "",
            .windowCentre = "",
            .windowWidth = "",
            .firstPosition = -52,
            .spacing = 4,
            .slices = 26,
            .isPet = true,
            .edge = 96,
            .pixelSpacing = 4};
}

} // namespace

std::vector<SampleSeries> sampleSeries()
{
    return {softTissue(muellerBaseline(), 2), lung(muellerBaseline(), 3), softTissue(muellerFollowUp(), 2),
            softTissue(soerensen(), 2)};
}

std::vector<SampleSeries> fusionSeries()
{
    return {emission(muellerFollowUp(), 4)};
}

std::vector<SampleSeries> manyInstances(int inInstances)
{
    constexpr int perSeries = 100;
    constexpr int seriesPerStudy = 10;
    std::vector<SampleSeries> all;
    for (int left = inInstances; left > 0; left -= perSeries) {
        const int index = static_cast<int>(all.size());
        const std::string study = std::to_string(index / seriesPerStudy + 1);
        SampleSeries series = softTissue(soerensen(), index % seriesPerStudy + 1);
        series.study.folder = "many/" + study;
        series.study.patientId = "SAMPLE-M" + study;
        series.study.studyId = study;
        series.study.accessionNumber = "M" + study;
        series.slices = std::min(left, perSeries);
        series.edge = 128;
        series.pixelSpacing = 3;
        all.push_back(series);
    }
    return all;
}
