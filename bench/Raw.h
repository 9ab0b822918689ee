// The same work with libxml2 alone, as a good C programmer would write it: what the library is
// measured against.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

struct RawAnswer {
  std::string issuer, status, sessionEnd;
  std::map<std::string, std::vector<std::string>> attributes;
};

/// Parses the text, validates it when asked (compiling the schema files as the system packages have
/// them), and walks the answers out. Ends the program when the text is refused.
RawAnswer rawRead(std::string_view text, bool validate);

/// Makes an authentication request and dumps it.
std::string rawAuthnRequest(const std::string& issuer);

}  // namespace bench
