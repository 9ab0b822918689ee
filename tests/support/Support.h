// What the tests share: inline XML, a clock that stands still, a log that can be read.
#pragma once

#include <cstdlib>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "kestrelink/platform/Clock.h"
#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/saml/KestrelinkSAML.h"
#include "kestrelink/saml/elements/SAMLDateText.h"

#include "tests/support/Attack.h"

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

/// An answer as text: "-" when it is absent, "<Name>" for an element, "[one two]" for a list.
template <class Answer>
std::string shown(const Answer& answer) {
  if constexpr (requires { answer->tagName(); }) {
    return answer ? "<" + answer->tagName().value_or("") + ">" : "-";
  } else if constexpr (requires { answer.value(); }) {
    return answer ? shown(*answer) : "-";
  } else if constexpr (std::is_same_v<Answer, SAMLDate>) {
    return *SAMLStringFromDate(answer);
  } else if constexpr (std::is_arithmetic_v<Answer>) {
    return std::to_string(static_cast<int>(answer));
  } else if constexpr (std::is_convertible_v<decltype(*answer.begin()), char>) {
    return {answer.begin(), answer.end()};
  } else {
    std::string all;
    for (const auto& one : answer) all += (all.empty() ? "" : " ") + shown(one);
    return "[" + all + "]";
  }
}

/// Several answers, with a blank between them.
template <class Answer, class... More>
std::string shown(const Answer& answer, const More&... more) requires(sizeof...(more) > 0) {
  return shown(answer) + ((" " + shown(more)) + ...);
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
