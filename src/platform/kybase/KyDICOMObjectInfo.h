#pragma once

#include <ovwebservice/DicomTagPath.h>

#include <QString>
#include <QStringList>

/// How the application names DICOM elements, and what can go wrong when one is read.
class KyDICOMObjectInfo
{
public:
    /// The name of one DICOM element: "DICOM." and the path that Ovg::DicomTagPath reads, such as
    /// "DICOM.StudyInstanceUID", "DICOM.(0010,0010)" or
    /// "DICOM.RequestAttributesSequence[0].ScheduledProcedureStepID". A value.
    class TagKey
    {
    public:
        /// A key that names nothing.
        TagKey() = default;

        /// Takes the name \a inName, prefix and keywords with case. When it is malformed or not known, the
        /// key names nothing. \a outOk, if not null, tells which.
        void deserialize(const QString& inName, bool* outOk);

        /// The name as deserialize() reads it back; empty for a key that names nothing.
        QString serialize() const;

        bool isValid() const { return mPath.isValid(); }
        const Ovg::DicomTagPath& path() const { return mPath; }

        bool operator==(const TagKey&) const = default;

    private:
        Ovg::DicomTagPath mPath;
    };

    /// What was odd about the values that were read, one line for each thing. Grows with each read.
    struct Warnings
    {
        QStringList texts;
    };
};
