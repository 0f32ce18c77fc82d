#pragma once

#include <QString>

#include <string>
#include <vector>

namespace Ovg {

/// A tag as the standard prints it: "(7FE0,0010)".
QString dicomTagText(unsigned short inGroup, unsigned short inElement);

/// Names one element of a DICOM data set: at its top level, or inside items of sequences. A value.
///
/// The text form is a list of steps with dots between them; all but the last step name a sequence. A step is
/// - the standard's keyword of the element, with case: `PatientName`. Retired elements have theirs too;
/// - the tag as hexadecimal number, in either case: `(0010,0010)`;
/// - for private elements the group, the creator in quotes and the last two digits of the element number:
///   `(0029,"ACME CT 01",10)`. The creator finds the block, whichever it is in the file. A quote
///   inside the creator is written twice. A private tag in plain numbers names just that number.
///
/// A sequence takes the number of the item behind it, from 0: `RequestAttributesSequence[1].PatientName`;
/// without it the first item is meant. The last step has no item number.
///
/// Blanks, an unknown keyword or anything else give an invalid path, whose only operation of interest is
/// isValid(). Keywords come from DCMTK's data dictionary, which is loaded at the first need; any thread may
/// be the first.
class DicomTagPath
{
public:
    struct Step
    {
        unsigned short group = 0;
        unsigned short element = 0; ///< With a creator only the low byte counts, the high one is 0.
        std::string creator = {};   ///< Empty but for the private form.
        int item = 0;               ///< Number of the item of a sequence, 0 in the last step.

        bool operator==(const Step&) const = default;
    };

    /// An invalid path.
    DicomTagPath() = default;

    /// One element at the top level.
    DicomTagPath(unsigned short inGroup, unsigned short inElement);

    /// The path that \a inText names, invalid if it is malformed or has an unknown keyword.
    static DicomTagPath fromText(const QString& inText);

    bool isValid() const { return !mSteps.empty(); }

    /// The path as text that fromText() reads back: keywords where the dictionary has one, tags in upper case
    /// else, `[0]` left out. Empty for an invalid path.
    QString toText() const;

    const std::vector<Step>& steps() const { return mSteps; }

    bool operator==(const DicomTagPath&) const = default;

private:
    std::vector<Step> mSteps;
};

} // namespace Ovg
