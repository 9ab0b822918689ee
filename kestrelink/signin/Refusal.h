// How a step ends the way of a message: by an exception that never leaves the library.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "kestrelink/signin/Result.h"

namespace kestrelink::signin {

class Refusal : public std::runtime_error {
 public:
  Refusal(Reason reason, const std::string& explanation)
      : std::runtime_error(explanation), reason_(reason) {}
  Reason reason() const { return reason_; }

 private:
  Reason reason_;
};

[[noreturn]] inline void refuse(Reason reason, const std::string& explanation) {
  throw Refusal(reason, explanation);
}

inline void require(bool condition, Reason reason, const char* explanation) {
  if (!condition) refuse(reason, explanation);
}

/// Refused with `tooLong` when the text has more than so many bytes.
void requireLength(std::string_view text, std::size_t most);

/// A value of a message for an explanation: quoted, shortened, without control characters.
std::string quoted(std::string_view value);

}  // namespace kestrelink::signin
