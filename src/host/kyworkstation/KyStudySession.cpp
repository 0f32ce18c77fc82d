#include "KyStudySession.h"

#include <kybase/KyNotifiable.h>

#include <algorithm>

namespace {

using Exams = KyLoadHelper::Exams;

KyLoadHelper* loader()
{
    const auto session = KySessionContext::currentInstance();
    return session ? session->component<KyLoadHelper>(true) : nullptr;
}

/// Whether something was taken out.
bool remove(Exams& ioStudies, const Exams& inOthers)
{
    return std::erase_if(ioStudies, [&](const auto& study) {
               return std::any_of(inOthers.begin(), inOthers.end(), [&](const auto& other) {
                   return Ovg::DicomDirectoryEntry::studyEquals(*study, *other);
               });
           }) > 0;
}

std::shared_ptr<Ovg::DicomDirectoryEntry> firstOf(const Exams& inStudies)
{
    return inStudies.empty() ? nullptr : inStudies.front();
}

void notify(int inCode)
{
    KyNotifiable::notify(KyNotification(inCode, 0, 0, nullptr, KySessionContext::currentInstanceID()));
}

} // namespace

const Exams& KyStudySession::primary()
{
    static const Exams none;
    const KyLoadHelper* helper = loader();
    return helper ? helper->primaryExams() : none;
}

const Exams& KyStudySession::additional()
{
    static const Exams none;
    const KyLoadHelper* helper = loader();
    return helper ? helper->additionalExams() : none;
}

void KyStudySession::add(const Exams& inStudies, bool inAdditional)
{
    KyLoadHelper* helper = loader();
    if (!helper || inStudies.empty())
        return;
    Exams target = inAdditional ? helper->additionalExams() : helper->primaryExams();
    Exams other = inAdditional ? helper->primaryExams() : helper->additionalExams();
    remove(target, inStudies);
    const bool isMoved = remove(other, inStudies);
    target.insert(target.end(), inStudies.begin(), inStudies.end());
    std::stable_sort(target.begin(), target.end(), [](const auto& a, const auto& b) { return *a < *b; });

    const auto setExams = [&](bool additional, Exams exams) {
        additional ? helper->setAdditionalExams(std::move(exams)) : helper->setPrimaryExams(std::move(exams));
    };
    const auto before = firstOf(helper->primaryExams());
    if (isMoved)
        setExams(!inAdditional, std::move(other));
    setExams(inAdditional, std::move(target));
    const auto after = firstOf(helper->primaryExams());
    if (before && after && !KyLoadHelper::isSamePatient(*before, *after))
        notify(KyNotification::PatientChanged);
}

void KyStudySession::clear()
{
    if (KyLoadHelper* helper = loader()) {
        helper->setPrimaryExams({});
        helper->setAdditionalExams({});
        notify(KyNotification::SessionClosed);
    }
}
