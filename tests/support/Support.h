// What the tests share: inline XML, files of cases, a clock that stands still, a log that can be
// read.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "kestrelink/platform/Clock.h"
#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/platform/Text.h"
#include "kestrelink/saml/KestrelinkSAML.h"

#include "tests/support/Attack.h"
#include "tests/support/LibxmlVersion.h"
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
  std::istringstream kept(file(name)), given(text);
  std::string was, is;
  for (int line = 1, shown = 0; shown < 10 && (kept || given); ++line) {
    std::getline(kept, was);
    std::getline(given, is);
    if (kept.good() != given.good() || was != is) {
      ADD_FAILURE() << name << ":" << line << "\n- " << was << "\n+ " << is;
      ++shown;
    }
  }
}

inline std::vector<std::string> split(std::string_view text, std::string_view separator) {
  std::vector<std::string> parts;
  for (std::size_t at; (at = text.find(separator)) != std::string_view::npos;) {
    parts.emplace_back(text.substr(0, at));
    text.remove_prefix(at + separator.size());
  }
  parts.emplace_back(text);
  return parts;
}

/// Compares a file of cases with what is returned for each: an input is a line of its own, in which
/// "\xE9" stands for a byte, and what it gives stands below it, after "|". "#" begins a comment;
/// "# 2.9:" one on cases that another libxml2 reads otherwise, to the end of the paragraph.
inline void expectCases(const std::string& name,
                        const std::function<std::string(const std::string& input)>& work) {
  std::istringstream kept(file(name));
  std::string all;
  bool is29 = false;
  for (std::string line; std::getline(kept, line);) {
    is29 = !line.empty() && (is29 || line.starts_with("# 2.9:"));
    if (is29 && fuzz::kNewLibxml) {
      all += line + "\n";
      continue;
    }
    if (line.starts_with('|')) continue;
    all += line + "\n";
    if (line.empty() || line.starts_with('#')) continue;
    for (std::size_t at; (at = line.find("\\x")) != std::string::npos;) {
      line.replace(at, 4, 1, static_cast<char>(std::stoi(line.substr(at + 2, 2), nullptr, 16)));
    }
    std::istringstream given(work(line));
    while (std::getline(given, line)) {
      const unsigned char last = isUtf8(line) ? 255 : 127;
      const auto isUnreadable = [last](unsigned char each) {
        return (each < ' ' && each != '\t') || each > last;
      };
      std::replace_if(line.begin(), line.end(), isUnreadable, '?');
      all += (line.empty() ? "|" : "| ") + line + "\n";
    }
  }
  EXPECT_NE(all, "") << name;
  expectKept(name, all);
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

/// An element with its class, text, namespaces and attributes, and all below it.
inline std::string described(const XMLWrapperElement& element, const std::string& indent = "") {
  std::string all = indent + shown(element.tagName());
  const std::string_view name = element.dynamicClass().name();
  if (name != "XMLWrapperElement") all.append(" is a ").append(name);
  if (element.textContent()) all += " text='" + shown(element.textContent()) + "'";
  for (std::size_t at = 0; at < element.namespaces().size(); ++at) {
    const auto& ns = element.namespaces().at(at);
    all += " xmlns:" + shown(ns->prefix()) + "=" + shown(ns->href());
  }
  for (const auto& [key, attribute] : element.attributes()) {
    all += " " + key + "='" + shown(attribute->value()) + "'";
    if (const auto& ns = attribute->ns()) all += " in " + shown(ns->prefix(), ns->href());
    if (attribute->type() != 0) all += " type " + shown(attribute->type());
  }
  for (const auto& child : element.elements()) all += "\n" + described(*child, indent + "  ");
  return all;
}

/// "domain code", or "none".
inline std::string text(const std::optional<ErrorInfo>& error) {
  return error ? shown(error) : "none";
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
