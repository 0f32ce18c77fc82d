#include "OvStudyObject.h"

OvStudyObject::OvStudyObject(std::shared_ptr<Ovg::DicomDirectoryEntry> inEntry, bool inPinned,
                             bool inRelevant)
    : relevant(inRelevant)
    , mEntry(std::move(inEntry))
    , mPinned(inPinned)
{}

OvStudyObject::~OvStudyObject() = default;
