// Every message and recipe of this folder is an attack; verdicts.txt says what becomes of it.

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/fuzz/Targets.h"
#include "tests/support/Attack.h"
#include "tests/support/LibxmlVersion.h"
#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> attacks() {
  std::vector<fs::path> found;
  for (const auto& entry : fs::directory_iterator(SOURCE_DIR "/tests/attacks")) {
    const fs::path extension = entry.path().extension();
    if (extension == ".xml" || extension == ".recipe") found.push_back(entry.path());
  }
  std::sort(found.begin(), found.end());
  return found;
}

// As a client reads it, or the bytes straight, of any encoding and without the schema.
std::string verdict(const std::string& message, bool asClient) {
  std::optional<ErrorInfo> error;
  const auto response =
      asClient ? SAMLParserController::sharedInstance().parseCachedResponse(message, &error)
               : read(message, &error);
  if (!response) return text(error);
  const auto subject = response->subject();
  const auto nameId = subject ? subject->firstElementByTagName("NameID") : nullptr;
  const auto who = nameId ? nameId->textContent() : std::nullopt;
  return "accepted, of " + (who ? who->substr(0, 40) : "nobody");
}

TEST(Attacks, GoldenVerdicts) {
  const LogCapture log;
  std::string verdicts =
      "# What becomes of each file of this folder: as a client reads it, with the schema but not "
      "its\n"
      "# time window, and without the schema.\n";
  for (const fs::path& path : attacks()) {
    const std::string message = fuzz::attack(path);
    verdicts += path.stem().string() + " | " + verdict(message, true) + " | " +
                verdict(message, false) + "\n";
  }
  expectKept(fuzz::kVerdicts, verdicts);
}

// In a process of its own each: with a time limit and a peak of its own, and read as the tree has
// it.
TEST(Attacks, EndSoonAndTakeLittleMemory) {
  constexpr long kMultiple = 250;
  for (const fs::path& path : attacks()) {
    const std::string message = fuzz::attack(path);
    const long before = fuzz::peakOf([] {});
    const long peak = fuzz::peakOf([&message] {
      fuzz::start();
      fuzz::responseWithSchema(message);
      fuzz::responseWithoutSchema(message);
    });
    EXPECT_GE(peak, 0) << path << " crashes, hangs, or is read otherwise than its tree";
    if (!SANITIZED) {
      EXPECT_LE(peak - before, 8000 + kMultiple * static_cast<long>(message.size() / 1024)) << path;
    }
  }
}

// Under a sanitizer a validation takes ten times as long: there only some are validated.
TEST(Damage, CutAndFlippedAtEveryByte) {
  fuzz::start();
  const std::string sample = file("tests/fixtures/answer.xml");
  for (std::size_t at = 0; at < sample.size(); ++at) {
    std::string flipped = sample;
    flipped[at] = static_cast<char>(sample[at] ^ (1 << (at % 8)));
    for (const std::string& message : {sample.substr(0, at), flipped}) {
      fuzz::responseWithoutSchema(message);
      if (at % (SANITIZED ? 29 : 1) == 0) fuzz::responseWithSchema(message);
    }
  }
  setDiagnosticObserverForTesting(nullptr);
}

}  // namespace
}  // namespace kestrelink::testing
