#pragma once

/// Which values become black and which white (DICOM PS3.3 C.11.2.1.2 and C.11.2.1.3). A value.
struct OvWindow
{
    enum Function
    {
        Linear,
        LinearExact,
        Sigmoid,
    };

    double centre = 0;
    double width = 1; ///< More than 0, and at least 1 for Linear.
    Function function = Linear;

    /// From 0, black, to 1, white.
    double brightness(double inValue) const;

    /// The window in which \a inLeast is just black and \a inGreatest just white.
    static OvWindow spanning(double inLeast, double inGreatest);

    bool operator==(const OvWindow&) const = default;
};
