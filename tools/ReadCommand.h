#pragma once

#include <string>
#include <vector>

#include "Reading.h"
#include "Verification.h"

namespace ksaml {

/// `ksaml read`: reads messages and reports on each.
class ReadCommand {
 public:
  /// Adds the subcommand to the command line.
  explicit ReadCommand(CLI::App& app);

  bool isChosen() const;
  /// The program's exit status: 0 all accepted, 1 some rejected, 2 some unreadable.
  int run();

 private:
  /// Reports on one message; the exit status for it.
  int read(kestrelink::SAMLParserController& controller, const std::string& file);
  static void print(const std::string& text);

  CLI::App& command_;
  Verification verification_;
  ReadOptions options_;
  std::vector<std::string> files_;
  bool base64_ = false, json_ = false, xml_ = false, isFirst_ = true;
};

}  // namespace ksaml
