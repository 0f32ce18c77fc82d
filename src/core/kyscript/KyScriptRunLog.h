#pragma once

#include <rnlib/RnWatch.h>

#include <QtCore/QUuid>

class QString;

/// The log of one run: its announcement at construction, its duration at finish().
///
/// Governed by the application property "Scripting.LogNumLines" (1 unless set): 0 logs nothing, a positive
/// value is the number of source lines logged when a text runs for the first time in the process, a negative
/// one logs the whole source then. A text is known again by the MD5 hash of its Latin-1 bytes, whatever its
/// file and description; later runs log only that identity.
class KyScriptRunLog
{
public:
    KyScriptRunLog(const QString& inSource, const QString& inInfo, const QString& inFileName, int inLine);

    /// Logs how long the run took when that is more than a millisecond.
    void finish() const;

    /// Registers the property and its labels with every property pool, from now on.
    static void registerProperties();

private:
    RnWatch mWatch;
    int mLogLines;
    QUuid mIdentity;
};
