#pragma once

#include <cmath>

/// A point or a direction in the patient, in mm: x to the left, y to the back, z to the head (DICOM PS3.3
/// C.7.6.2.1.1).
struct OvVector3
{
    double x = 0;
    double y = 0;
    double z = 0;

    friend OvVector3 operator+(const OvVector3& inA, const OvVector3& inB)
    {
        return {inA.x + inB.x, inA.y + inB.y, inA.z + inB.z};
    }
    friend OvVector3 operator-(const OvVector3& inA, const OvVector3& inB)
    {
        return {inA.x - inB.x, inA.y - inB.y, inA.z - inB.z};
    }
    friend OvVector3 operator*(const OvVector3& inA, double inFactor)
    {
        return {inA.x * inFactor, inA.y * inFactor, inA.z * inFactor};
    }

    double dot(const OvVector3& inOther) const { return x * inOther.x + y * inOther.y + z * inOther.z; }
    OvVector3 cross(const OvVector3& inOther) const
    {
        return {y * inOther.z - z * inOther.y, z * inOther.x - x * inOther.z, x * inOther.y - y * inOther.x};
    }
    double length() const { return std::sqrt(dot(*this)); }
    /// The component along an axis of the patient: 0 for x, 1 for y, 2 for z.
    double along(int inAxis) const { return inAxis == 0 ? x : inAxis == 1 ? y : z; }
};
