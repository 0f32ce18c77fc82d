#pragma once

#include <string>

namespace Ovg {

/// A group of users. Texts are UTF-8.
struct GroupInfo
{
    std::string name;
    std::string description;
};

} // namespace Ovg
