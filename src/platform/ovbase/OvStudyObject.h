#pragma once

#include <rnlib/RnHandle.h>

#include <memory>

namespace Ovg {
class DicomDirectoryEntry;
}

/// One study of the patient at hand, with what the user or the application thinks of it. Made by whoever
/// lists the studies; held by handles.
class OvStudyObject : public RnHandable
{
public:
    explicit OvStudyObject(std::shared_ptr<Ovg::DicomDirectoryEntry> inEntry, bool inPinned = false,
                           bool inRelevant = false);
    ~OvStudyObject() override;

    /// The study's entry; empty when it was made without one.
    const std::shared_ptr<Ovg::DicomDirectoryEntry>& dde() const { return mEntry; }

    /// Whether the user holds on to the study.
    bool pinned() const { return mPinned; }
    void setPinned(bool inPinned) { mPinned = inPinned; }

    /// Whether the study matters for the present examination.
    bool relevant = false;

private:
    const std::shared_ptr<Ovg::DicomDirectoryEntry> mEntry;
    bool mPinned = false;
};
