// Every file of this folder is an attack; beside it stands what becomes of it.

#include <iconv.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>

#include <gtest/gtest.h>

#include "Support.h"
#include "fuzz/Targets.h"

namespace kestrelink::testing {
namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
constexpr bool kSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kSanitized = false;
#endif

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// "@{N|text}" is the text N times, "#" in it the number of the time.
std::string expanded(std::string_view text) {
  std::string result;
  for (std::size_t at = text.find("@{"); at != std::string_view::npos; at = text.find("@{")) {
    const std::size_t bar = text.find('|', at), end = text.find('}', bar);
    const std::string_view piece = text.substr(bar + 1, end - bar - 1);
    const std::size_t mark = piece.find('#');
    result += text.substr(0, at);
    for (int time = 0; time < std::stoi(std::string(text.substr(at + 2, bar))); ++time) {
      result += piece.substr(0, mark);
      if (mark == std::string_view::npos) continue;
      result.append(std::to_string(time)).append(piece.substr(mark + 1));
    }
    text.remove_prefix(end + 1);
  }
  return result.append(text);
}

std::string inEncoding(const std::string& name, std::string text) {
  const iconv_t conversion = iconv_open(name.c_str(), "UTF-8");
  std::string result(4 * text.size() + 8, '\0');
  char *from = text.data(), *to = result.data();
  std::size_t left = text.size(), room = result.size();
  EXPECT_EQ(iconv(conversion, &from, &left, &to, &room), 0U) << name;
  iconv_close(conversion);
  result.resize(result.size() - room);
  return result;
}

std::string attack(const fs::path& path) {
  std::string text = contentOf(path);
  std::smatch directive;
  const std::string first = text.substr(0, text.find('\n'));
  if (!std::regex_match(first, directive, std::regex("@(raw|iconv) ?(.*)"))) return expanded(text);
  text = expanded(std::string_view(text).substr(first.size() + 1));
  return directive[1] == "raw" ? text : inEncoding(directive[2], text);
}

std::vector<fs::path> attacks() {
  std::vector<fs::path> found;
  for (const auto& entry : fs::directory_iterator(SOURCE_DIR "/tests/attacks")) {
    if (entry.path().extension() == ".xml") found.push_back(entry.path());
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

// The peak of a process that does nothing but this, in KB; -1 when it ends in another way.
long peakOf(const std::function<void()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    work();
    _exit(0);
  }
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? usage.ru_maxrss : -1;
}

TEST(Attacks, HaveTheirVerdicts) {
  const LogCapture log;
  for (const fs::path& path : attacks()) {
    const std::string message = attack(path);
    const std::string found = "as a client: " + verdict(message, true) +
                              "\nwithout schema: " + verdict(message, false) + "\n";
    fs::path expected = path;
    expected.replace_extension("verdict");
    EXPECT_EQ(found, contentOf(expected)) << path;
  }
}

// In a process of its own each: a time limit and a peak of its own, and answers as the tree has
// them.
TEST(Attacks, EndSoonAndTakeLittleMemory) {
  constexpr long kMultiple = 250;
  for (const fs::path& path : attacks()) {
    const std::string message = attack(path);
    const long before = peakOf([] {});
    const long peak = peakOf([&message] {
      fuzz::start();
      fuzz::responseWithSchema(message);
      fuzz::responseWithoutSchema(message);
    });
    EXPECT_GE(peak, 0) << path << " crashes, hangs, or answers what its tree does not";
    if (!kSanitized) {
      EXPECT_LE(peak - before, 8000 + kMultiple * static_cast<long>(message.size() / 1024)) << path;
    }
  }
}

// Under a sanitizer a validation takes ten times as long: there only some are validated.
void readAll(const std::function<std::string(const std::string&, std::size_t)>& damaged) {
  constexpr std::size_t kStep = kSanitized ? 29 : 1;
  fuzz::start();
  const std::string sample = contentOf(SOURCE_DIR "/examples/answer.xml");
  for (std::size_t at = 0; at < sample.size(); ++at) {
    const std::string message = damaged(sample, at);
    fuzz::responseWithoutSchema(message);
    if (at % kStep == 0) fuzz::responseWithSchema(message);
  }
  setDiagnosticObserverForTesting(nullptr);
}

TEST(Damage, CutAtEveryByte) {
  readAll([](const std::string& sample, std::size_t at) { return sample.substr(0, at); });
}

TEST(Damage, FlippedAtEveryByte) {
  readAll([](std::string sample, std::size_t at) {
    sample[at] = static_cast<char>(sample[at] ^ (1 << (at % 8)));
    return sample;
  });
}

}  // namespace
}  // namespace kestrelink::testing
