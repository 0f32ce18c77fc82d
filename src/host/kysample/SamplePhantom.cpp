#include "SamplePhantom.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

constexpr double Endless = 1e6; ///< The half axis of what goes through all slices.

double mixed(double inValue, double inOver, double inPart)
{
    return inValue + (inOver - inValue) * inPart;
}

} // namespace

double SamplePhantom::inside(const Ellipsoid& inBody, double inX, double inY, double inZ) const
{
    const double x = (inX - inBody.x) / inBody.a;
    const double y = (inY - inBody.y) / inBody.b;
    const double z = (inZ - inBody.z) / inBody.c;
    const double square = x * x + y * y + z * z;
    const double least = std::min({inBody.a, inBody.b, inBody.c});
    const double edge = 1 + mBlur / 2 / least;
    if (square > edge * edge)
        return 0;
    return std::clamp((1 - std::sqrt(square)) * least / mBlur + 0.5, 0.0, 1.0);
}

double SamplePhantom::lung(double inX, double inY, double inZ) const
{
    const double right = inside({-82, -8, 10, 60, 82, 130}, inX, inY, inZ);
    const double left = inside({82, -8, 10, 58, 80, 126}, inX, inY, inZ);
    return std::max(right, left);
}

/// Slanting rings around the lungs, of which a slice cuts pieces.
double SamplePhantom::ribs(double inX, double inY, double inZ) const
{
    constexpr double Distance = 26;
    constexpr double Thickness = 5.5;
    const double shell = std::fabs(std::hypot(inX / 152, (inY + 4) / 104) - 1) * 104;
    const double slanted = inZ + 0.42 * inY;
    const double offset = std::fabs(slanted - Distance * std::round(slanted / Distance));
    const double distance = Thickness - std::hypot(shell, offset);
    return std::clamp(distance / mBlur + 0.5, 0.0, 1.0);
}

/// Branches from the middle of each lung outwards, thinner and thinner.
double SamplePhantom::vessels(double inX, double inY, double inZ) const
{
    double found = 0;
    for (int branch = 0; branch < 14; ++branch) {
        const double side = branch % 2 ? 1 : -1;
        const double angle = (branch / 2 - 3) * 0.42;
        const double rise = std::sin(branch * 2.4) * 0.7;
        const double along = (inX * side - 28) / std::cos(angle);
        if (along < 0 || along > 96)
            continue;
        const double y = inY + 12 - std::sin(angle) * along - 4 * std::sin(along / 17 + branch);
        const double z = inZ - rise * along - 5 * std::cos(along / 13 + branch);
        const double radius = 5.2 * (1 - along / 110);
        found = std::max(found, std::clamp((radius - std::hypot(y, z)) / mBlur + 0.5, 0.0, 1.0));
    }
    return found;
}

double SamplePhantom::hounsfield(double inX, double inY, double inZ) const
{
    const auto part = [&](const Ellipsoid& inBody) { return inside(inBody, inX, inY, inZ); };
    double value = -1000;
    const double body = part({0, 0, 0, 178, 126, Endless});
    if (body == 0)
        return value;
    value = mixed(value, -20, body);                                // skin
    value = mixed(value, -105, part({0, 0, 0, 175, 123, Endless})); // fat
    value = mixed(value, 52, part({0, 0, 0, 160, 110, Endless}));   // muscle
    const double lungPart = lung(inX, inY, inZ);
    value = mixed(value, -860, lungPart);
    if (lungPart > 0)
        value = mixed(value, 35, lungPart * vessels(inX, inY, inZ));
    value = mixed(value, 62, part({-62, 0, -104, 92, 84, 58}));  // liver
    value = mixed(value, 48, part({28, -28, -28, 58, 48, 56}));  // heart
    value = mixed(value, 135, part({34, -24, -24, 27, 24, 32})); // its left chamber
    value = mixed(value, 135, part({-2, -34, -12, 22, 22, 30})); // and the right one
    value = mixed(value, 40, part({0, -20, 50, 26, 38, 46}));    // mediastinum
    value = mixed(value, 150, part({-4, -26, 52, 12, 12, Endless}) * part({0, 0, 70, 300, 300, 52}));
    value = mixed(value, 150, part({20, 46, 0, 11.5, 11.5, Endless})); // aorta going down
    value = mixed(value, -980, part({0, 4, 80, 9, 8, 62}));            // windpipe
    value = mixed(value, 420, ribs(inX, inY, inZ));
    const double disc = std::fabs(inZ / 24 - std::round(inZ / 24)) * 24;
    value = mixed(value, disc > 9 ? 90 : 210, part({0, 72, 0, 20, 17, Endless})); // vertebrae and discs
    value = mixed(value, 480, part({0, 72, 0, 20, 17, Endless}) * (1 - part({0, 72, 0, 17, 14, Endless})));
    value = mixed(value, 460, part({0, 100, 0, 12, 10, Endless})); // their arches
    value = mixed(value, 15, part({0, 93, 0, 8.5, 7, Endless}));   // the canal
    value = mixed(value, 330, part({0, -106, 30, 17, 6, 70}));     // breastbone
    return mixed(value, 46, part({84, -26, 6, 12, 12, 12}));       // the nodule
}

double SamplePhantom::uptake(double inX, double inY, double inZ) const
{
    const auto part = [&](const Ellipsoid& inBody) { return inside(inBody, inX, inY, inZ); };
    double value = mixed(0, 0.5, part({0, 0, 0, 172, 120, Endless}));
    value = mixed(value, 0.25, lung(inX, inY, inZ));
    value = mixed(value, 2.2, part({-62, 0, -104, 92, 84, 58}));
    value = mixed(value, 6.5, part({32, -26, -26, 42, 38, 44})); // the heart's wall
    value = mixed(value, 1.1, part({34, -24, -24, 25, 22, 28}));
    value = mixed(value, 1.2, part({20, 46, 0, 13, 13, Endless}));
    value = mixed(value, 1.5, part({0, 72, 0, 20, 17, Endless}));
    return mixed(value, 8.5, part({84, -26, 6, 12, 12, 12}));
}

double SamplePhantom::noise(int inColumn, int inRow, int inSlice)
{
    // Two rounds of a multiplicative hash; the sum of two numbers has a middle that is more frequent.
    auto hash = std::uint32_t(inColumn) * 0x9E3779B1U ^ std::uint32_t(inRow) * 0x85EBCA77U ^
                std::uint32_t(inSlice) * 0xC2B2AE3DU;
    hash = (hash ^ hash >> 15) * 0x2C1B3C6DU;
    hash = (hash ^ hash >> 12) * 0x297A2D39U;
    hash ^= hash >> 15;
    return (double(hash & 0xFFFF) + double(hash >> 16)) / 65535 - 1;
}
