#pragma once

#include <QByteArray>

namespace Ovg {

/// A text that no other call gives, in this process or another: 32 lower-case hexadecimal digits, which are
/// those of a random UUID (RFC 4122, version 4), so 122 random bits. Always there; any thread.
QByteArray generateHash32();

} // namespace Ovg
