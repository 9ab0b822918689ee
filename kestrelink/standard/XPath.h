// XPath with prefixes of its own. The described `getResultsByXpathQuery` uses those of the messages
// that were read last in the process, whichever thread read them.
//
//     const auto found = xpath(*response, "//saml:Audience", {{"saml", kAssertionNamespace}});
//     if (found && !found->empty()) use(found->front()->textContent());
#pragma once

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace kestrelink::standard {

/// A prefix that an XPath expression uses, and the name of its namespace.
struct XPathPrefix {
  std::string_view prefix;
  std::string_view uri;
};

namespace detail {

/// The text up to the first character that cannot stand in a name without a colon.
inline std::string_view leadingName(std::string_view text) {
  const auto isNameByte = [](char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= '0' && byte <= '9') || byte == '_' || byte == '-' || byte == '.' ||
           (byte & 0x80) != 0;
  };
  return text.substr(0, static_cast<std::size_t>(
                            std::find_if_not(text.begin(), text.end(), isNameByte) - text.begin()));
}

/// A step that selects what "prefix:name" selects; empty for a name that XPath 1.0 cannot quote.
inline std::string stepFor(std::string_view name, std::string_view uri) {
  const char quote = uri.find('"') == std::string_view::npos ? '"' : '\'';
  if (uri.find(quote) != std::string_view::npos) return {};
  std::string step = "*[";
  if (name != "*") step.append("local-name()=\"").append(name).append("\" and ");
  return step.append("namespace-uri()=").append(1, quote).append(uri).append(1, quote) + "]";
}

/// Appends the part of the expression that comes first, and removes it there. False when its prefix
/// is not in the list.
inline bool movePart(std::string_view& expression, std::string& result,
                     std::initializer_list<XPathPrefix> prefixes) {
  const auto move = [&](std::size_t length) {
    result += expression.substr(0, length);
    expression.remove_prefix(std::min(length, expression.size()));
    return true;
  };
  const char first = expression.front();
  if (first == '"' || first == '\'') {
    const std::size_t end = expression.find(first, 1);
    return move(end == std::string_view::npos ? expression.size() : end + 1);
  }
  const std::string_view prefix = leadingName(expression);
  if (prefix.empty()) return move(1);
  std::string_view rest = expression.substr(prefix.size());
  if (rest.starts_with("::")) return move(prefix.size() + 2);  // an axis
  if (!rest.starts_with(':')) return move(prefix.size());
  rest.remove_prefix(1);
  const std::string_view name = rest.starts_with('*') ? rest.substr(0, 1) : leadingName(rest);
  const auto known = std::find_if(prefixes.begin(), prefixes.end(),
                                  [prefix](const auto& each) { return each.prefix == prefix; });
  const std::string step = known == prefixes.end() || name.empty() ? "" : stepFor(name, known->uri);
  result += step;
  expression.remove_prefix(prefix.size() + 1 + name.size());
  return !step.empty();
}

/// The expression without prefixes; `std::nullopt` when one is not in the list.
inline std::optional<std::string> withoutPrefixes(std::string_view expression,
                                                  std::initializer_list<XPathPrefix> prefixes) {
  std::string result;
  while (!expression.empty()) {
    if (!movePart(expression, result, prefixes)) return std::nullopt;
  }
  return result;
}

}  // namespace detail

/// The nodes that the XPath 1.0 expression selects, each as a new element; the root element is the
/// context. Only the prefixes of the list are known. `std::nullopt` with the errors of
/// `XMLWrapperDoc::getResultsByXpathQuery`; a prefix that is not in the list is
/// `kXMLWrapperErrorXPathNotEvaluated`.
[[nodiscard]] inline std::optional<XMLWrapperElement::List> xpath(
    const XMLWrapperDoc& document, std::string_view expression,
    std::initializer_list<XPathPrefix> prefixes, ErrorOut error = nullptr) {
  const auto plain = detail::withoutPrefixes(expression, prefixes);
  if (plain) return document.getResultsByXpathQuery(*plain, error);
  if (error != nullptr) {
    *error = ErrorInfo{std::string(kXMLWrapperErrorDomain), kXMLWrapperErrorXPathNotEvaluated, {}};
  }
  return std::nullopt;
}

}  // namespace kestrelink::standard
