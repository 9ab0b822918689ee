// The same work with libxml2 alone, as a good C programmer would write it: what the library is
// measured against.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

struct RawValues {
  std::string issuer, status, sessionEnd;
  std::map<std::string, std::vector<std::string>> attributes;
};

/// The schema files to validate with: as the system's packages have them, or as the library stages
/// them for its bundle.
enum class Schema { none, ofPackages, ofBundle };

/// Parses the message, validates it with these files, compiling them, and walks to the values. Ends
/// the program when the message is rejected.
RawValues rawRead(std::string_view message, Schema schema);

/// A new identifier and the current time, as a request has them.
struct Stamp {
  std::string identifier, instant;
};
Stamp newStamp();

/// Makes an authentication request and dumps it.
std::string rawAuthnRequest(const std::string& issuer);

}  // namespace bench
