// What the library's operations return, as text.
#pragma once

#include <string>
#include <type_traits>

#include "kestrelink/saml/elements/SAMLDateText.h"
#include "kestrelink/xml/ErrorInfo.h"

namespace kestrelink::testing {

/// A value as text: "-" when it is null, "<Name>" for an element, "[one two]" for a list.
template <class Value>
std::string shown(const Value& value) {
  if constexpr (requires { value->tagName(); }) {
    return value ? "<" + value->tagName().value_or("") + ">" : "-";
  } else if constexpr (requires { value.value(); }) {
    return value ? shown(*value) : "-";
  } else if constexpr (std::is_same_v<Value, ErrorInfo>) {
    return value.domain + " " + std::to_string(value.code);
  } else if constexpr (std::is_same_v<Value, SAMLDate>) {
    return SAMLStringFromDate(value).value_or("no date");
  } else if constexpr (std::is_arithmetic_v<Value>) {
    return std::to_string(static_cast<int>(value));
  } else if constexpr (std::is_convertible_v<decltype(*value.begin()), char>) {
    return {value.begin(), value.end()};
  } else {
    std::string all;
    for (const auto& one : value) all += (all.empty() ? "" : " ") + shown(one);
    return "[" + all + "]";
  }
}

/// Several values, with a blank between them.
template <class Value, class... More>
std::string shown(const Value& value, const More&... more) requires(sizeof...(more) > 0) {
  return shown(value) + ((" " + shown(more)) + ...);
}

}  // namespace kestrelink::testing
