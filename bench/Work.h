// The works that are measured, by name, with the library and with libxml2 alone.
#pragma once

#include <string>
#include <string_view>

namespace bench {

/// A response with that many attributes of three values, besides the sample's own.
std::string responseWith(int attributes);

/// Does the work once: "read" (with schema), "read-compact" (the same; libxml2 alone then has the
/// library's schema files, too), "read-no-schema" or "request". The message is what is read. The
/// result depends on all that was read, so that nothing is optimised away.
std::size_t libraryWork(std::string_view work, const std::string& message);
std::size_t rawWork(std::string_view work, const std::string& message);

}  // namespace bench
