// What the tests know of the libxml2 that they run with: what 2.15 does otherwise than 2.9, and
// whose faults are known.
#pragma once

#include <algorithm>
#include <string_view>

#include <libxml/parser.h>
#include <libxml/xmlversion.h>

#include "tests/support/Attack.h"

namespace fuzz {

constexpr bool kNewLibxml = LIBXML_VERSION >= 21200;

/// The verdicts on the attacks: what is malformed is recovered otherwise, and what costs
/// libxml2 2.9 too much is read.
constexpr const char* kVerdicts =
    kNewLibxml ? "tests/attacks/verdicts-2.15.txt" : "tests/attacks/verdicts.txt";

/// How many of so many errors of one document are reported.
constexpr int reportedErrors(int errors) { return kNewLibxml ? std::min(errors, 100) : errors; }

/// A global of old versions.
inline int debugEntities() {
#if LIBXML_VERSION < 21400
  return xmlParserDebugEntities;
#else
  return 0;
#endif
}

/// Whether the faults of libxml2 that tests/stress/known_faults.txt lists are those of this one:
/// they are named by functions, which depend on the compiler.
inline bool faultsAreKnown() {
  static const bool known =
      std::string_view(xmlParserVersion).starts_with("20914") &&
      contentOf("/etc/os-release").find("VERSION_ID=\"12\"") != std::string::npos;
  return known;
}

}  // namespace fuzz
