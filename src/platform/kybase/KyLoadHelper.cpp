#include "KyLoadHelper.h"

#include "KyMonitorManager.h"

#include <jxbase/JxMessageBox.h>

#include <QCoreApplication>

#include <cstdint>
#include <set>
#include <unordered_set>

namespace {

QString withoutEmptyEnd(const QString& inText)
{
    const auto isFiller = [](QChar c) {
        return c.isSpace() || c == QLatin1Char('^') || c == QLatin1Char('=');
    };
    qsizetype length = inText.size();
    while (length > 0 && isFiller(inText[length - 1]))
        --length;
    return inText.left(length).trimmed();
}

bool mayBeEqual(const QString& inA, const QString& inB)
{
    return inA.isEmpty() || inB.isEmpty() || inA.compare(inB, Qt::CaseInsensitive) == 0;
}

/// What tells one study from another: its UID or, without one, the object.
std::string identity(const Ovg::DicomDirectoryEntry& inStudy)
{
    const std::string& uid = inStudy.studyInstanceUid();
    return uid.empty() ? std::to_string(reinterpret_cast<std::uintptr_t>(&inStudy)) + "@" : uid;
}

/// The study as an object of the session. \a inBefore, which may be null, is what it was until now.
RnHandle<OvStudyObject> studyObject(const std::shared_ptr<Ovg::DicomDirectoryEntry>& inExam,
                                    const OvStudyObject* inBefore, bool inPrimary)
{
    RnHandle<OvStudyObject> study(new OvStudyObject(inExam));
    study->relevant = inPrimary || (inBefore && inBefore->relevant);
    study->setPinned(inBefore && inBefore->pinned());
    return study;
}

using Numbers = std::set<QString>;

void addNumber(Numbers& ioNumbers, const QString& inNumber)
{
    const QString number = inNumber.trimmed();
    if (!number.isEmpty())
        ioNumbers.insert(number);
}

Numbers numbersOf(const QList<QString>& inAccessionNumbers)
{
    Numbers numbers;
    for (const QString& number : inAccessionNumbers)
        addNumber(numbers, number);
    return numbers;
}

Numbers numbersOf(const KyLoadHelper::Exams& inExams)
{
    Numbers numbers;
    for (const auto& exam : inExams)
        addNumber(numbers, QString::fromStdString(exam->accessionNumber()));
    return numbers;
}

QString textOf(const Numbers& inNumbers)
{
    const QStringList all(inNumbers.begin(), inNumbers.end());
    return all.isEmpty() ? QCoreApplication::translate("KyLoadHelper", "none")
                         : all.join(QLatin1String(", "));
}

} // namespace

std::unique_ptr<KyLoadHelper> KyLoadHelper::create(KySessionContext&)
{
    return std::make_unique<KyLoadHelper>();
}

void KyLoadHelper::setPrimaryExams(Exams inExams)
{
    std::erase(inExams, nullptr);
    mPrimaryOld = std::exchange(mPrimary, std::move(inExams));
    studiesChanged();
}

void KyLoadHelper::setAdditionalExams(Exams inExams)
{
    std::erase(inExams, nullptr);
    mAdditionalOld = std::exchange(mAdditional, std::move(inExams));
    studiesChanged();
}

std::shared_ptr<Ovg::DicomDirectoryEntry>
KyLoadHelper::dicomDirectoryEntryForStudy(const char* inStudyId) const
{
    if (!inStudyId)
        return nullptr;
    const auto found = mByUid.find(inStudyId);
    return found == mByUid.end() ? nullptr : found->second;
}

bool KyLoadHelper::isOutOfSync(const QList<QString>& inAccessionNumbers) const
{
    const Numbers wanted = numbersOf(inAccessionNumbers);
    return !wanted.empty() && wanted != numbersOf(mPrimary);
}

/// The session may end while the box is open.
int KyLoadHelper::showOutOfSyncWarning(const QList<QString>& inAccessionNumbers) const
{
    if (!isOutOfSync(inAccessionNumbers))
        return 0;
    JxMessageBox box(KyMonitorManager::parentForModalWidget(), false);
    box.setIcon(QMessageBox::Warning);
    box.setWindowTitle(QCoreApplication::applicationName());
    box.setText(QCoreApplication::translate("KyLoadHelper",
                                            "The studies on the screen are not those of the other program."));
    box.setInformativeText(
        QCoreApplication::translate("KyLoadHelper", "Accession numbers there: %1\nAccession numbers here: %2")
            .arg(textOf(numbersOf(inAccessionNumbers)), textOf(numbersOf(mPrimary))));
    box.setTextFormat(Qt::PlainText);
    box.setStandardButtons(QMessageBox::Ok);
    return box.exec();
}

bool KyLoadHelper::isSamePatient(const Ovg::DicomDirectoryEntry& inA, const Ovg::DicomDirectoryEntry& inB)
{
    if (Ovg::DicomDirectoryEntry::studyEquals(inA, inB))
        return true;
    const QString idA = withoutEmptyEnd(inA.patientId());
    const QString idB = withoutEmptyEnd(inB.patientId());
    const QString nameA = withoutEmptyEnd(inA.patientName());
    const QString nameB = withoutEmptyEnd(inB.patientName());
    if (idA != idB || !mayBeEqual(nameA, nameB))
        return false;
    if (idA.isEmpty())
        return !nameA.isEmpty() && !nameB.isEmpty();
    return mayBeEqual(inA.issuerOfPatientId().trimmed(), inB.issuerOfPatientId().trimmed());
}

void KyLoadHelper::studiesChanged()
{
    mByUid.clear();
    indexStudies(mPrimary);
    indexStudies(mAdditional);
    collectPatientStudies();
}

void KyLoadHelper::indexStudies(const Exams& inExams)
{
    for (const auto& exam : inExams) {
        if (!exam->studyInstanceUid().empty())
            mByUid.emplace(exam->studyInstanceUid(), exam);
    }
}

void KyLoadHelper::collectPatientStudies()
{
    std::unordered_map<std::string, RnHandle<OvStudyObject>> before;
    for (const auto& study : std::exchange(mPatientStudies, {}))
        before.emplace(identity(*study->dde()), study);
    std::unordered_set<std::string> taken;
    const auto collect = [&](const Exams& inExams, bool inPrimary) {
        for (const auto& exam : inExams) {
            const std::string id = identity(*exam);
            if (isSamePatient(*mPrimary.front(), *exam) && taken.insert(id).second)
                mPatientStudies.push_back(studyObject(exam, before[id].get(), inPrimary));
        }
    };
    if (mPrimary.empty())
        return;
    collect(mPrimary, true);
    collect(mAdditional, false);
}
