// Verifies messages with the second library, as the options of `ksaml read` say.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kestrelink/signin/SignIn.h"

namespace CLI {
class App;
}  // namespace CLI

namespace ksaml {

class Verification {
 public:
  /// Adds the options to the command line.
  explicit Verification(CLI::App& command);

  /// Whether the command line asks for it.
  bool isAsked() const { return metadataFile_ || !certificateFiles_.empty(); }
  /// Reads the files. False, with a line on standard error, when one cannot be used.
  bool start();
  /// The verdict on what came in; `root` is the name of the message's root.
  kestrelink::signin::Result resultOf(const std::string& received, const std::string& root) const;

 private:
  std::optional<kestrelink::signin::Provider> provider() const;
  kestrelink::signin::Policy policy() const;

  std::optional<std::string> metadataFile_, inResponseTo_, queryAbout_;
  std::vector<std::string> certificateFiles_, keyFiles_;
  std::string providerId_, audience_, acsUrl_;
  std::optional<unsigned> clockSkew_, sessionSeconds_;
  bool acceptSha1_ = false;
  std::unique_ptr<const kestrelink::signin::SignIn> signIn_;
};

}  // namespace ksaml
