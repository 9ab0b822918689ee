#include "kestrelink/signin/Pending.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <iterator>

#include "kestrelink/signin/Dates.h"
#include "kestrelink/signin/Refusal.h"

namespace kestrelink::signin {
namespace {

constexpr std::string_view kFormat = "kestrelink-pending-1";
constexpr std::array<std::string_view, 3> kKinds = {"sign-in", "logout", "query"};

// Each field as its length, a colon, the field and a comma: values may hold any character.
void put(std::string& text, std::string_view field) {
  text += std::to_string(field.size());
  text += ':';
  text.append(field) += ',';
}

std::string take(std::string_view& text) {
  std::size_t length = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
  const auto start = static_cast<std::size_t>(end - text.data()) + 1;
  const bool isField = error == std::errc() && start <= text.size() && text[start - 1] == ':' &&
                       length < text.size() - start && text[start + length] == ',';
  require(isField, Reason::request, "the text kept from the request is not complete");
  std::string field(text.substr(start, length));
  text.remove_prefix(start + length + 1);
  return field;
}

Pending::Kind kindOf(std::string_view name) {
  for (std::size_t index = 0; index < kKinds.size(); ++index) {
    if (kKinds[index] == name) return static_cast<Pending::Kind>(index);
  }
  refuse(Reason::request, "the text kept from the request is of no known kind");
}

SAMLDate dateOf(const std::string& text) {
  const auto date = dateFromText(text, Rounding::down);
  require(date.has_value(), Reason::request, "the text kept from the request has no date");
  return *date;
}

}  // namespace

std::string Pending::text() const {
  std::string text;
  for (const std::string_view field : {kFormat, kKinds[static_cast<std::size_t>(kind)]}) {
    put(text, field);
  }
  for (const std::string& field : {id, provider, issuer, subject, textOf(begun)}) {
    put(text, field);
  }
  return text;
}

Pending Pending::fromText(std::string_view text) {
  require(take(text) == kFormat, Reason::request,
          "the text kept from the request is of another version");
  // The members in the order in which `text` writes them: braces evaluate from left to right.
  return {kindOf(take(text)), take(text), take(text), take(text), take(text), dateOf(take(text))};
}

}  // namespace kestrelink::signin
