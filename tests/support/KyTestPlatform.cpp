#include "KyTestPlatform.h"

#include <ovwebservice/DicomTagPath.h>

KyTestPlatform::KyTestPlatform()
    : registry(nullptr)
{}

KyTestPlatform::~KyTestPlatform() = default;

std::shared_ptr<Ovg::DicomDirectoryEntry>
KyTestPlatform::studyWith(const std::map<QString, QString>& inElements)
{
    Ovg::DicomHeader header;
    for (const auto& [keyword, text] : inElements)
        header.setText(Ovg::DicomTagPath::fromText(keyword), text);
    return std::make_shared<Ovg::DicomDirectoryEntry>(header);
}

std::shared_ptr<Ovg::DicomDirectoryEntry> KyTestPlatform::study(const QString& inUid,
                                                                const QString& inPatient)
{
    return studyWith({{"StudyInstanceUID", inUid}, {"PatientName", inPatient}, {"PatientID", inPatient}});
}
