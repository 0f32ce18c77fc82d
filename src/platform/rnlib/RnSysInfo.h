#pragma once

#include <cstdint>

/// Facts of the machine.
class RnSysInfo
{
public:
    /// Physical memory in bytes; 0 when the system does not tell.
    static std::uint64_t physmem_total();
};
