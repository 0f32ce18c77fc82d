#pragma once

/// A chest made of ellipsoids, in millimetres from its middle: x to the patient's left, y to the back, z to
/// the head. Edges are as soft as a scanner makes them.
class SamplePhantom
{
public:
    /// \a inBlur is the width of edges, in mm.
    explicit SamplePhantom(double inBlur)
        : mBlur(inBlur)
    {}

    /// Hounsfield units of computed tomography.
    double hounsfield(double inX, double inY, double inZ) const;
    /// Uptake of a tracer by positron emission tomography, 1 that of blood.
    double uptake(double inX, double inY, double inZ) const;

    /// A number from -1 to 1 that looks random, the same one for the same place.
    static double noise(int inColumn, int inRow, int inSlice);

private:
    struct Ellipsoid
    {
        double x, y, z;
        double a, b, c; ///< Half axes.
    };

    /// How much of a place is inside, from 0 to 1.
    double inside(const Ellipsoid& inBody, double inX, double inY, double inZ) const;
    double lung(double inX, double inY, double inZ) const;
    double ribs(double inX, double inY, double inZ) const;
    double vessels(double inX, double inY, double inZ) const;

    const double mBlur;
};
