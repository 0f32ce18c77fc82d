#pragma once

#include <string>
#include <string_view>

/// A UID under the root 2.25 (ISO/IEC 9834-8: a UUID as one decimal number), derived from \a inName by SHA-1
/// (RFC 4122, version 5). The same name gives the same UID on every machine.
std::string sampleUid(std::string_view inName);
