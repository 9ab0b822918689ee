// What the tests share: inline XML, a clock that stands still, a log that can be read.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "kestrelink/platform/Clock.h"
#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/saml/KestrelinkSAML.h"

#include "tests/support/Attack.h"
#include "tests/support/Shown.h"

namespace kestrelink::testing {

inline SharedBytes bytes(std::string_view text) {
  return std::make_shared<const std::string>(text);
}

/// What a file of the project contains.
inline std::string file(std::string_view name) {
  return fuzz::contentOf(SOURCE_DIR "/" + std::string(name));
}

/// Compares a text with what a file of the project keeps; or keeps the text, when the environment
/// asks for that with KESTRELINK_RENEW.
inline void expectKept(const std::string& name, const std::string& text) {
  if (std::getenv("KESTRELINK_RENEW") != nullptr) {
    std::ofstream(SOURCE_DIR "/" + name, std::ios::binary) << text;
  }
  EXPECT_EQ(text, file(name)) << name;
}

/// The same for the files of a folder that have that extension: one without a text is reported.
inline void expectAllKept(const std::string& folder, std::string_view extension,
                          const std::map<std::string, std::string>& texts) {
  for (const auto& [name, text] : texts) expectKept(folder + name, text);
  for (const auto& entry : std::filesystem::directory_iterator(SOURCE_DIR "/" + folder)) {
    const std::filesystem::path& path = entry.path();
    EXPECT_TRUE(path.extension() != extension || texts.contains(path.filename().string()))
        << path << " is compared with nothing";
  }
}

/// The document of an inline message, read without a schema and with the SAML classes registered.
inline std::shared_ptr<SAMLResponse> read(std::string_view xml, ErrorOut error = nullptr) {
  SAMLParserController::sharedInstance();
  return SAMLResponse::initWithData(bytes(xml), nullptr, error);
}

/// The root element of an inline message as a class.
template <class Element = XMLWrapperElement>
std::shared_ptr<Element> root(std::string_view xml) {
  const auto doc = read(xml);
  auto element = doc ? std::dynamic_pointer_cast<Element>(doc->documentElement()) : nullptr;
  EXPECT_TRUE(element) << xml;
  return element;
}

/// "domain code", or "none".
inline std::string text(const std::optional<ErrorInfo>& error) {
  return error ? error->domain + " " + std::to_string(error->code) : "none";
}

/// The clock of the library stands still while it lives.
class StandingClock {
 public:
  explicit StandingClock(std::string_view instant, std::chrono::nanoseconds later = {}) {
    setClockForTesting(SAMLDateFromString(instant)->seconds() + later);
  }
  ~StandingClock() { setClockForTesting(std::nullopt); }
  StandingClock(const StandingClock&) = delete;
  StandingClock& operator=(const StandingClock&) = delete;
};

/// Collects the diagnostic log while it lives.
class LogCapture {
 public:
  LogCapture() {
    lines().clear();
    setDiagnosticObserverForTesting([](std::string_view line) noexcept {
      const std::lock_guard lock(mutex());
      lines().emplace_back(line);
    });
  }
  ~LogCapture() { setDiagnosticObserverForTesting(nullptr); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  static std::vector<std::string>& lines() {
    static std::vector<std::string> collected;
    return collected;
  }

 private:
  static std::mutex& mutex() {
    static std::mutex guard;
    return guard;
  }
};

}  // namespace kestrelink::testing
