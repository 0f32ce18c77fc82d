#pragma once

#include <QDateTime>
#include <QStringView>

#include <optional>

// Dates and times as DICOM writes them (PS3.5, VRs DA, TM, DT). Each gives nothing for a text that isn't
// valid.

namespace Ovg {

/// "20240311", or "2024.03.11" as before 1993.
std::optional<QDate> parseDicomDate(QStringView inText);

/// "08", "0845", "084512", "084512.375" with one to six digits behind the point, of which milliseconds are
/// kept; or with colons as before 1993. What is missing counts as 0.
std::optional<QTime> parseDicomTime(QStringView inText);

/// An offset from UTC, "+0100", in seconds.
std::optional<int> parseDicomUtcOffset(QStringView inText);

/// "20240311084512.375+0100" or shorter from the right; a missing month or day counts as the first. Without
/// an offset \a inOffset holds, without that local time.
std::optional<QDateTime> parseDicomDateTime(QStringView inText, std::optional<int> inOffset);

} // namespace Ovg
