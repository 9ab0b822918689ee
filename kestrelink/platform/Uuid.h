#pragma once

#include <string>

namespace kestrelink {

/// A fresh random UUID (RFC 4122, version 4) as upper-case text: 36 characters.
std::string randomUuid();

/// Replaces the source of UUIDs; null restores the random one. For tests.
using UuidSource = std::string (*)();
void setUuidSourceForTesting(UuidSource source) noexcept;

}  // namespace kestrelink
