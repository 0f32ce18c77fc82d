#pragma once

/// The values of a volume on a grid: columns along a row of an image, rows of an image, images.
///
/// Belongs to its volume, which fills it.
class OvData
{
public:
    virtual ~OvData();

    /// Fills in the number of columns, rows and images, each at least 1.
    virtual void dimensions(int& outColumns, int& outRows, int& outImages) const = 0;
};
