// The works that are measured, by name, with the library and with libxml2 alone.
#pragma once

#include <string>
#include <string_view>

namespace bench {

/// An answer with that many attributes of three values, besides the sample's own.
std::string answerWith(int attributes);

/// Does the work once: "read" (with schema), "read-no-schema" or "request"; the message is what is
/// read. What it answers depends on all that was read, so nothing is left out.
std::size_t libraryWork(std::string_view work, const std::string& message);
std::size_t rawWork(std::string_view work, const std::string& message);

}  // namespace bench
