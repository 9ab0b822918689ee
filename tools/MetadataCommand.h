#pragma once

#include <optional>
#include <string>

namespace CLI {
class App;
}  // namespace CLI

namespace ksaml {

/// `ksaml metadata`: writes the client's metadata, for its providers.
class MetadataCommand {
 public:
  /// Adds the subcommand to the command line.
  explicit MetadataCommand(CLI::App& app);

  bool isChosen() const;
  /// The program's exit status: 0 when they were written, 2 when they were not.
  int run() const;

 private:
  CLI::App& command_;
  std::string issuer_, acsUrl_, logoutUrl_;
  std::optional<std::string> certificateFile_, encryptionFile_;
  bool signsRequests_ = false;
};

}  // namespace ksaml
