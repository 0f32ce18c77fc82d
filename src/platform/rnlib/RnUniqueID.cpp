#include "RnUniqueID.h"

#include <atomic>

RnUniqueID RnUniqueID::create()
{
    static std::atomic<std::uint64_t> last{0};
    return RnUniqueID(++last);
}
