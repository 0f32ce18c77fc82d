#pragma once

#include <kybase/KyLoadHelper.h>

/// The studies of the current session, for a user who opens and closes them. Without a session all lists are
/// empty and nothing is changed.
namespace KyStudySession {

const KyLoadHelper::Exams& primary();
const KyLoadHelper::Exams& additional();

/// Adds studies to the primary or the additional ones, in the order of DicomDirectoryEntry. A study that is
/// there already, in either list, takes the place of the one before: it may have got new images. Tells all
/// who want to hear of it when the first primary study is of another patient than the one before.
void add(const KyLoadHelper::Exams& inStudies, bool inAdditional);

/// Ends all studies, and tells all who want to hear of it that the session is closed.
void clear();

} // namespace KyStudySession
