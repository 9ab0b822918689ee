#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ksaml {

/// More than any message needs. A limit is necessary: a small input can inflate to gigabytes.
inline constexpr std::size_t kMostInflated = std::size_t{8} << 20;

/// The text as DEFLATE (RFC 1951), without a header.
std::string deflated(std::string_view text);

struct Inflated {
  std::string text;
  bool tooLong = false;  // over `kMostInflated`
};

/// Inflates DEFLATE without a header; `std::nullopt` when the bytes are malformed or truncated.
std::optional<Inflated> inflated(std::string_view bytes);

}  // namespace ksaml
