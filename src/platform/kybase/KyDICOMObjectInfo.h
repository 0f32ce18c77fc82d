#pragma once

#include <ovwebservice/DicomTagPath.h>

#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <vector>

class KyDICOMObjectInterface;
class OvVolume;

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

    /// What holds for the images of a viewer beside what they say themselves. A value; a viewer's
    /// KyConditionSource makes it.
    class ConditionDictionary
    {
    public:
        /// The element \a inKey has the value \a inValue for the viewer, whatever its images say. The window
        /// that a user has chosen is told in this way. An invalid value hides the element. With an
        /// \a inVolume, which is only compared, that is so for the images of this volume alone.
        void setValue(const TagKey& inKey, const QVariant& inValue, const OvVolume* inVolume = nullptr);
        /// Null for a key without such a value for the images of \a inVolume, which may be null.
        const QVariant* value(const TagKey& inKey, const OvVolume* inVolume = nullptr) const;

        /// True when what is on show is no single image, as in a plane across all of them: then an element
        /// has a value only where all images have the same.
        void setSharedOnly(bool inSharedOnly) { mSharedOnly = inSharedOnly; }
        bool sharedOnly() const { return mSharedOnly; }

    private:
        struct Condition
        {
            TagKey key;
            const OvVolume* volume; ///< Null for all.
            QVariant value;
        };

        std::vector<Condition> mValues;
        bool mSharedOnly = false;
    };

    /// Reads elements under the conditions of a viewer. A value.
    class Dictionary
    {
    public:
        /// Null for no conditions.
        explicit Dictionary(const std::shared_ptr<const ConditionDictionary>& inConditions);

        /// The value of the element \a inKey for the viewer: that of the conditions, or else the one of
        /// \a inObject, which may be null and then has none. Invalid when there is none, or an empty text if
        /// \a inEmptyForNone. Oddities of the value are added to \a outWarnings, if not null.
        QVariant evaluate(const TagKey& inKey, const std::shared_ptr<KyDICOMObjectInterface>& inObject,
                          Warnings* outWarnings, bool inEmptyForNone) const;

    private:
        std::shared_ptr<const ConditionDictionary> mConditions;
    };
};
