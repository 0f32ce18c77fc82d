#pragma once

#include <ovwebservice/DicomDirectoryEntry.h>

#include <initializer_list>
#include <memory>
#include <utility>

/// A study in memory from keywords and texts, such as {{"StudyInstanceUID", "1.2"}, {"PatientID", "P1"}}.
inline std::shared_ptr<Ovg::DicomDirectoryEntry>
madeStudy(std::initializer_list<std::pair<const char*, const char*>> inElements)
{
    Ovg::DicomHeader header;
    for (const auto& [keyword, text] : inElements)
        header.setText(Ovg::DicomTagPath::fromText(QString::fromLatin1(keyword)), QString::fromUtf8(text));
    return std::make_shared<Ovg::DicomDirectoryEntry>(header);
}
