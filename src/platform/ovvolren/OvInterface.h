#pragma once

#include <rnlib/RnHandle.h>
#include <rnlib/RnUniqueID.h>

#include <cstddef>

/// Base of the platform objects that are known by an id while they live: volumes, viewers.
///
/// Construction enters the object in the table of live objects, which is always there, and destruction
/// takes it out. So an id is the right thing to keep for an object that may go away. All this happens on the
/// GUI thread.
class OvInterface : public RnHandable
{
public:
    OvInterface();

    /// The object's id, never empty and never given to another object.
    RnUniqueID uniqueID() const { return mUniqueID; }

    /// The live object of that id. Null for an empty id and for that of an object that has gone.
    static OvInterface* instanceWithUID(RnUniqueID inId);

    /// Number of objects in the table.
    static std::size_t numInstances();

protected:
    ~OvInterface() override;

private:
    const RnUniqueID mUniqueID;
};
