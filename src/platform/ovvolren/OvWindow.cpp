#include "OvWindow.h"

#include <algorithm>
#include <cmath>
#include <limits>

double OvWindow::brightness(double inValue) const
{
    switch (function) {
    case Linear:
        if (width <= 1)
            return inValue <= centre - 0.5 ? 0 : 1;
        return std::clamp((inValue - (centre - 0.5)) / (width - 1) + 0.5, 0.0, 1.0);
    case LinearExact:
        return std::clamp((inValue - centre) / width + 0.5, 0.0, 1.0);
    case Sigmoid:
        return 1 / (1 + std::exp(-4 * (inValue - centre) / width));
    }
    return 0;
}

OvWindow OvWindow::spanning(double inLeast, double inGreatest)
{
    const double centre = inLeast / 2 + inGreatest / 2;
    const double width = std::max(inGreatest - inLeast, std::numeric_limits<double>::min());
    return {.centre = centre, .width = std::isfinite(width) ? width : 1, .function = LinearExact};
}
