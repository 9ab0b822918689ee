#pragma once

#include <string>

namespace kestrelink {

/// A fresh random UUID (RFC 4122, version 4) as upper-case text: 36 characters.
std::string randomUuid();

/// Every UUID comes from this function instead; null gives randomness back. For tests.
using UuidSource = std::string (*)();
void setUuidSourceForTesting(UuidSource source) noexcept;

}  // namespace kestrelink
