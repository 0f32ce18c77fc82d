#pragma once

#include <istream>
#include <ostream>

/// A value type of another module: stream operators, and no comparison.
struct Temperature
{
    double celsius = 0;
};

inline std::ostream& operator<<(std::ostream& ioStream, const Temperature& inValue)
{
    return ioStream << inValue.celsius << 'C';
}

inline std::istream& operator>>(std::istream& ioStream, Temperature& ioValue)
{
    double celsius = 0;
    char unit = 0;
    if (ioStream >> celsius >> unit && unit == 'C')
        ioValue.celsius = celsius;
    else
        ioStream.setstate(std::ios::failbit);
    return ioStream;
}
