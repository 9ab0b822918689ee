#pragma once

#include <string>
#include <vector>

#include "Reading.h"

namespace ksaml {

/// `ksaml read`: reads messages and reports on each.
struct ReadCommand {
  ReadOptions options;
  bool base64 = false;
  bool json = false;
  std::vector<std::string> files;

  /// The program's exit status: 0 all accepted, 1 some rejected, 2 some unreadable.
  int run() const;
};

}  // namespace ksaml
