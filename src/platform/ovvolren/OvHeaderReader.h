#pragma once

#include <ovwebservice/DicomHeader.h>

#include <optional>
#include <string>
#include <vector>

/// Reads values of one frame of an image from a header. In an enhanced object they stand in functional
/// groups, of the frame or of all frames (PS3.3 C.7.6.16), else at the top level.
class OvHeaderReader
{
public:
    explicit OvHeaderReader(const Ovg::DicomHeader& inHeader);

    bool isEnhanced() const { return mPerFrame > 0 || mShared > 0; }
    /// Number of frames that have functional groups of their own.
    int framesWithGroups() const { return mPerFrame; }

    /// The finite numbers of the element \a inKeyword at the top level; none when one of them is no number.
    std::vector<double> numbers(const char* inKeyword) const;
    /// The same from the sequence \a inGroup of the frame's functional groups, or else from the top level.
    std::vector<double> numbers(int inFrame, const char* inGroup, const char* inKeyword) const;

    std::optional<double> number(const char* inKeyword) const;
    /// Nothing also for a number with a fraction, or beyond int.
    std::optional<int> integer(const char* inKeyword) const;
    std::string text(const char* inKeyword) const;
    std::string text(int inFrame, const char* inGroup, const char* inKeyword) const;

    QVariant value(const QString& inPath) const;

private:
    QVariant value(int inFrame, const char* inGroup, const char* inKeyword) const;

    const Ovg::DicomHeader& mHeader;
    int mPerFrame = 0;
    int mShared = 0;
};
