#include "tests/fuzz/Answers.h"

#include <utf8.h>

#include "kestrelink/saml/elements/SAMLDateText.h"

namespace fuzz {
namespace {

using Text = std::optional<std::string>;
using Texts = std::vector<std::string>;
using Nodes = std::vector<const xmlNode*>;

Texts listOf(const Text& text) { return text ? Texts{*text} : Texts(); }

std::string_view view(const xmlChar* text) {
  return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

bool isReadable(const xmlNode* node) {
  const std::string_view text = node && node->type == XML_TEXT_NODE ? view(node->content) : "\xFF";
  return utf8::is_valid(text.begin(), text.end());
}

std::string_view withoutBlanksAround(std::string_view text) {
  // The characters with Unicode's property White_Space.
  static const std::string_view blanks[] = {
      " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085", "\u00A0", "\u1680",
      "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
      "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000"};
  for (bool again = true; again;) {
    again = false;
    for (const std::string_view blank : blanks) {
      const bool before = text.starts_with(blank), after = !before && text.ends_with(blank);
      if (before) text.remove_prefix(blank.size());
      if (after) text.remove_suffix(blank.size());
      again = again || before || after;
    }
  }
  return text;
}

Nodes childrenOf(const xmlNode* parent, std::string_view name) {
  Nodes found;
  for (const xmlNode* child = parent ? parent->children : nullptr; child; child = child->next) {
    if (child->type == XML_ELEMENT_NODE && view(child->name) == name) found.push_back(child);
  }
  return found;
}

const xmlNode* childOf(const xmlNode* parent, std::string_view name) {
  const Nodes found = childrenOf(parent, name);
  return found.empty() ? nullptr : found.front();
}

Text textOf(const xmlNode* element) {
  std::string text;
  for (const xmlNode* child = element ? element->children : nullptr; child; child = child->next) {
    if (isReadable(child)) text += withoutBlanksAround(view(child->content));
  }
  return text.empty() ? std::nullopt : Text(text);
}

Text attributeOf(const xmlNode* element, std::string_view name) {
  Text value;
  for (const xmlAttr* attribute = element ? element->properties : nullptr; attribute;
       attribute = attribute->next) {
    if (view(attribute->name) != name) continue;
    const xmlNode* const first = attribute->children;
    value = isReadable(first) ? Text(view(first->content)) : std::nullopt;
  }
  return value;
}

Texts statusCodesOf(const xmlNode* root) {
  Texts codes;
  const xmlNode* code = childOf(childOf(root, "Status"), "StatusCode");
  for (; const Text value = attributeOf(code, "Value"); code = childOf(code, "StatusCode")) {
    codes.push_back(*value);
  }
  return codes;
}

void addAttributes(const xmlNode* assertion, Answers& answers) {
  for (const xmlNode* attribute :
       childrenOf(childOf(assertion, "AttributeStatement"), "Attribute")) {
    const Text name = attributeOf(attribute, "Name");
    if (!name) continue;
    Texts& values = answers["attribute " + *name] = {};
    for (const xmlNode* value : childrenOf(attribute, "AttributeValue")) {
      if (const Text text = textOf(value)) values.push_back(*text);
    }
  }
}

}  // namespace

Answers answersOf(const kestrelink::SAMLResponse& response) {
  const auto subject = response.subject();
  const auto nameId = subject ? subject->firstElementByTagName("NameID") : nullptr;
  Answers answers = {
      {"issuer", listOf(response.selectedProvider())},
      {"subject", listOf(nameId ? nameId->textContent() : std::nullopt)},
      {"session index", listOf(response.authenticationSessionId())},
      {"session end", listOf(kestrelink::SAMLStringFromDate(response.authenticationTTL()))},
      {"status", response.statusCodes()}};
  for (const auto& [name, values] : response.attributes()) answers["attribute " + name] = values;
  return answers;
}

Answers answersByHand(const xmlDoc* doc) {
  const xmlNode* const root = xmlDocGetRootElement(doc);
  const std::string_view name = root ? view(root->name) : "";
  const Nodes assertions = name == "Response" ? childrenOf(root, "Assertion") : Nodes();
  const xmlNode *subject = nullptr, *session = nullptr;
  for (const xmlNode* assertion : assertions) {
    if (subject == nullptr) subject = childOf(assertion, "Subject");
    if (session == nullptr) session = childOf(assertion, "AuthnStatement");
  }
  const auto end = kestrelink::SAMLDateFromString(attributeOf(session, "SessionNotOnOrAfter"));
  Answers answers = {
      {"issuer", listOf(textOf(childOf(root, "Issuer")))},
      {"subject", listOf(textOf(childOf(subject, "NameID")))},
      {"session index", listOf(attributeOf(session, "SessionIndex"))},
      {"session end", listOf(kestrelink::SAMLStringFromDate(end))},
      {"status", name == "Response" || name == "LogoutResponse" ? statusCodesOf(root) : Texts()}};
  addAttributes(assertions.empty() ? nullptr : assertions.front(), answers);
  return answers;
}

std::string shown(const Answers& answers) {
  std::string text;
  for (const auto& [name, values] : answers) {
    text += name + "=";
    for (const std::string& value : values) text += value + ";";
  }
  return text;
}

}  // namespace fuzz
