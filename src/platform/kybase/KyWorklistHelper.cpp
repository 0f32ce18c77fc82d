#include "KyWorklistHelper.h"

#include "KyWorklistStore.h"

#include <ovwebservice/DicomDirectoryEntry.h>
#include <ovwebservice/WorklistEntry.h>

#include <algorithm>
#include <array>

namespace {

using Column = QString (*)(const Ovg::WorklistEntry&);

struct Word
{
    QLatin1String name;
    Column column; ///< Null for a column that a site adds.
};

QString assignee(const Ovg::WorklistEntry& inEntry)
{
    return QString::fromLatin1(inEntry.assignee);
}

QString status(const Ovg::WorklistEntry& inEntry)
{
    return QString::fromLatin1(inEntry.status);
}

QString flags(const Ovg::WorklistEntry& inEntry)
{
    return QString::number(inEntry.flags);
}

QString studyInstanceUid(const Ovg::WorklistEntry& inEntry)
{
    return QString::fromLatin1(inEntry.studyInstanceUid);
}

QString accessionNumber(const Ovg::WorklistEntry& inEntry)
{
    return QString::fromStdString(inEntry.accessionNumber);
}

QString patientId(const Ovg::WorklistEntry& inEntry)
{
    return QString::fromStdString(inEntry.patientId);
}

/// The code of a word is its place. New words go to the end.
constexpr std::array Words{
    Word{QLatin1String("Assignee"), assignee},
    Word{QLatin1String("Status"), status},
    Word{QLatin1String("Flags"), flags},
    Word{QLatin1String("StudyInstanceUID"), studyInstanceUid},
    Word{QLatin1String("AccessionNumber"), accessionNumber},
    Word{QLatin1String("PatientID"), patientId},
    Word{QLatin1String("PatientName"), nullptr},
    Word{QLatin1String("PatientBirthDate"), nullptr},
    Word{QLatin1String("PatientSex"), nullptr},
    Word{QLatin1String("RequestedProcedureID"), nullptr},
    Word{QLatin1String("RequestedProcedureDescription"), nullptr},
    Word{QLatin1String("ScheduledDateTime"), nullptr},
    Word{QLatin1String("Modality"), nullptr},
    Word{QLatin1String("Location"), nullptr},
    Word{QLatin1String("Priority"), nullptr},
    Word{QLatin1String("ReferringPhysician"), nullptr},
    Word{QLatin1String("Comment"), nullptr},
};

} // namespace

std::unique_ptr<KyWorklistHelper> KyWorklistHelper::create(KySessionContext&)
{
    return std::make_unique<KyWorklistHelper>();
}

std::shared_ptr<Ovg::WorklistEntry>
KyWorklistHelper::worklistEntry(std::shared_ptr<Ovg::DicomDirectoryEntry> inStudy, Option inOption)
{
    if (!inStudy)
        return nullptr;
    const QString uid = QString::fromLatin1(inStudy->studyInstanceUid());
    const auto known = mKnown.value(uid);
    if (inOption == KnownOnly || (inOption == KnownOrAsk && known))
        return known;
    auto* const store = KyWorklistStore::instance();
    const auto entry = store ? store->find(*inStudy) : nullptr;
    if (entry && !uid.isEmpty())
        mKnown.insert(uid, entry);
    else
        mKnown.remove(uid);
    return entry;
}

int KyWorklistHelper::code(const QString& inWord)
{
    const auto found =
        std::find_if(Words.begin(), Words.end(), [&](const Word& inRow) { return inRow.name == inWord; });
    return found == Words.end() ? -1 : static_cast<int>(found - Words.begin());
}

QString KyWorklistHelper::data(const Ovg::WorklistEntry& inEntry, int inCode)
{
    if (inCode < 0 || inCode >= static_cast<int>(Words.size()))
        return QString();
    const Word& word = Words[static_cast<std::size_t>(inCode)];
    return word.column ? word.column(inEntry) : inEntry.attributes.value(word.name);
}
