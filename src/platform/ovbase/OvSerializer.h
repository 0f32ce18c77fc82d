#pragma once

class OvVariant;

/// The way of a property's value to the place where it is kept, and back. A property without one is not kept.
///
/// Owned by whoever made it, which must outlive the properties that use it; the pool's default one is the
/// pool's own.
class OvSerializer
{
public:
    virtual ~OvSerializer();

    /// Stores the value of \a inProperty in the layer \a inPriority (see OvRegistry). False when it is not
    /// stored.
    virtual bool write(const OvVariant& inProperty, int inPriority) = 0;

    /// Puts the stored value of the highest layer into \a ioProperty. False when there is none, or when its
    /// text can't be read; the value of \a ioProperty is unspecified after the latter.
    virtual bool read(OvVariant& ioProperty) = 0;
};
