#pragma once

#include <QtCore/QString>

/// A person's name (DICOM VR PN) for people: of the first group that has one, "Family, Given Middle". Empty
/// for an empty name.
class KyPatientName
{
public:
    KyPatientName() = delete;

    static QString forDisplay(const QString& inName);
};
