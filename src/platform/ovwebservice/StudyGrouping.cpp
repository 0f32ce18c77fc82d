#include "StudyGrouping.h"

#include <algorithm>
#include <tuple>

namespace Ovg {

namespace {

bool instanceLess(const DicomInstanceFacts& inA, const DicomInstanceFacts& inB)
{
    return std::tie(inA.seriesNumber, inA.instance.instanceNumber, inA.instance.sopInstanceUid, inA.origin) <
           std::tie(inB.seriesNumber, inB.instance.instanceNumber, inB.instance.sopInstanceUid, inB.origin);
}

/// The first value as text without a character set, empty when there is none.
std::string plainText(const DicomHeader& inHeader, unsigned short inGroup, unsigned short inElement)
{
    const QVariant value = inHeader.value({inGroup, inElement});
    const bool list = value.typeId() == QMetaType::QVariantList;
    return (list ? value.toList().constFirst() : value).toString().toStdString();
}

int number(const DicomHeader& inHeader, unsigned short inGroup, unsigned short inElement)
{
    return QByteArray::fromStdString(plainText(inHeader, inGroup, inElement)).toInt();
}

} // namespace

StudyGrouping::Added StudyGrouping::add(const DicomInstanceFacts& inFacts)
{
    const std::string& sopInstanceUid = inFacts.instance.sopInstanceUid;
    if (inFacts.studyInstanceUid.empty())
        return Added::NoStudy;
    if (!sopInstanceUid.empty() && !mSopInstanceUids.insert(sopInstanceUid).second)
        return Added::Duplicate;
    const auto [place, isNew] = mIndexOfUid.try_emplace(inFacts.studyInstanceUid, mStudies.size());
    if (isNew)
        mStudies.emplace_back();
    mStudies[place->second].push_back(inFacts);
    return Added::Yes;
}

std::vector<std::vector<DicomInstanceFacts>> StudyGrouping::studies() const
{
    auto studies = mStudies;
    for (auto& instances : studies)
        std::sort(instances.begin(), instances.end(), instanceLess);
    return studies;
}

std::shared_ptr<DicomDirectoryEntry> makeStudy(const DicomHeader& inRepresentative,
                                               const std::vector<DicomInstanceFacts>& inInstances)
{
    std::vector<DicomSeries> allSeries;
    std::unordered_map<std::string, size_t> indexOfUid;
    for (const DicomInstanceFacts& facts : inInstances) {
        const auto [place, isNew] = indexOfUid.try_emplace(facts.seriesInstanceUid, allSeries.size());
        if (isNew)
            allSeries.push_back({.seriesInstanceUid = facts.seriesInstanceUid,
                                 .modality = facts.modality,
                                 .seriesNumber = facts.seriesNumber,
                                 .instances = {}});
        allSeries[place->second].instances.push_back(facts.instance);
    }
    return std::make_shared<DicomDirectoryEntry>(inRepresentative, std::move(allSeries));
}

DicomInstanceFacts factsOf(const DicomHeader& inHeader)
{
    return {.studyInstanceUid = plainText(inHeader, 0x0020, 0x000D),
            .seriesInstanceUid = plainText(inHeader, 0x0020, 0x000E),
            .modality = plainText(inHeader, 0x0008, 0x0060),
            .seriesNumber = number(inHeader, 0x0020, 0x0011),
            .instance = {.path = {},
                         .sopInstanceUid = plainText(inHeader, 0x0008, 0x0018),
                         .sopClassUid = plainText(inHeader, 0x0008, 0x0016),
                         .instanceNumber = number(inHeader, 0x0020, 0x0013)}};
}

void finish(StudySourceResult& ioResult)
{
    std::sort(ioResult.studies.begin(), ioResult.studies.end(),
              [](const auto& inA, const auto& inB) { return *inA < *inB; });
    ioResult.instances = 0;
    for (const auto& study : ioResult.studies)
        ioResult.instances += study->instanceCount();
}

} // namespace Ovg
