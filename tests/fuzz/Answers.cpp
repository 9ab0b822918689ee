#include "tests/fuzz/Answers.h"

#include <cctype>
#include <cstring>
#include <map>
#include <optional>
#include <vector>

#include <utf8.h>

#include "kestrelink/saml/elements/SAMLDateText.h"

namespace fuzz {
namespace {

using Text = std::optional<std::string>;
using Texts = std::vector<std::string>;

struct Answers {
  Text issuer, nameId, sessionIndex, sessionEnd;
  Texts statusCodes;
  std::map<std::string, Texts> attributes;

  std::string text() const {
    std::string all;
    const auto add = [&all](const char* what, const Text& text) {
      all.append(what).append(text ? " [" + *text + "]\n" : " absent\n");
    };
    add("issuer", issuer);
    add("subject", nameId);
    add("session index", sessionIndex);
    add("session end", sessionEnd);
    for (const std::string& code : statusCodes) add("status", code);
    for (const auto& [name, values] : attributes) {
      add("attribute", name);
      for (const std::string& value : values) add("  value", value);
    }
    return all;
  }
};

std::string_view view(const xmlChar* text) {
  return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

bool isUtf8(std::string_view text) { return utf8::is_valid(text.begin(), text.end()); }

std::string withoutBlanksAround(std::string_view text) {
  const char* const blanks = " \t\r\n\v\f";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(blanks) - first + 1));
}

std::vector<const xmlNode*> childrenOf(const xmlNode* parent, std::string_view name) {
  std::vector<const xmlNode*> found;
  if (parent == nullptr) return found;
  for (const xmlNode* child = parent->children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE && view(child->name) == name) found.push_back(child);
  }
  return found;
}

const xmlNode* childOf(const xmlNode* parent, std::string_view name) {
  const auto found = childrenOf(parent, name);
  return found.empty() ? nullptr : found.front();
}

Text textOf(const xmlNode* element) {
  std::string text;
  if (element == nullptr) return std::nullopt;
  for (const xmlNode* child = element->children; child != nullptr; child = child->next) {
    if (child->type != XML_TEXT_NODE || !isUtf8(view(child->content))) continue;
    text += withoutBlanksAround(view(child->content));
  }
  return text.empty() ? std::nullopt : Text(text);
}

Text attributeOf(const xmlNode* element, std::string_view name) {
  Text value;
  for (const xmlAttr* attribute = element->properties; attribute; attribute = attribute->next) {
    if (view(attribute->name) != name) continue;
    const xmlNode* const first = attribute->children;
    const bool readable =
        first != nullptr && first->type == XML_TEXT_NODE && isUtf8(view(first->content));
    value = readable ? Text(view(first->content)) : std::nullopt;
  }
  return value;
}

Text dateText(const std::optional<kestrelink::SAMLDate>& date) {
  return kestrelink::SAMLStringFromDate(date);
}

Texts statusCodesBelow(const xmlNode* root) {
  Texts codes;
  const xmlNode* code = childOf(childOf(root, "Status"), "StatusCode");
  for (; code != nullptr; code = childOf(code, "StatusCode")) {
    if (Text value = attributeOf(code, "Value")) codes.push_back(*value);
  }
  return codes;
}

std::map<std::string, Texts> attributesOf(const xmlNode* assertion) {
  std::map<std::string, Texts> attributes;
  for (const xmlNode* attribute :
       childrenOf(childOf(assertion, "AttributeStatement"), "Attribute")) {
    const Text name = attributeOf(attribute, "Name");
    if (!name) continue;
    Texts& values = attributes[*name];
    values.clear();
    for (const xmlNode* value : childrenOf(attribute, "AttributeValue")) {
      if (Text text = textOf(value)) values.push_back(*text);
    }
  }
  return attributes;
}

void walkAssertions(const xmlNode* root, Answers& answers) {
  const xmlNode *subject = nullptr, *authentication = nullptr;
  const auto assertions = childrenOf(root, "Assertion");
  for (const xmlNode* assertion : assertions) {
    if (subject == nullptr) subject = childOf(assertion, "Subject");
    if (authentication == nullptr) authentication = childOf(assertion, "AuthnStatement");
  }
  answers.nameId = textOf(childOf(subject, "NameID"));
  if (authentication != nullptr) {
    answers.sessionIndex = attributeOf(authentication, "SessionIndex");
    if (const Text end = attributeOf(authentication, "SessionNotOnOrAfter")) {
      answers.sessionEnd = dateText(kestrelink::SAMLDateFromString(*end));
    }
  }
  if (!assertions.empty()) answers.attributes = attributesOf(assertions.front());
}

}  // namespace

std::string answersOf(const kestrelink::SAMLResponse& response) {
  Answers answers;
  answers.issuer = response.selectedProvider();
  if (const auto subject = response.subject()) {
    const auto nameId = subject->firstElementByTagName("NameID");
    if (nameId) answers.nameId = nameId->textContent();
  }
  answers.sessionIndex = response.authenticationSessionId();
  answers.sessionEnd = dateText(response.authenticationTTL());
  answers.statusCodes = response.statusCodes();
  for (const auto& [name, values] : response.attributes()) answers.attributes[name] = values;
  return answers.text();
}

std::string answersByHand(const xmlDoc* doc) {
  Answers answers;
  const xmlNode* const root = xmlDocGetRootElement(doc);
  if (root == nullptr) return answers.text();
  answers.issuer = textOf(childOf(root, "Issuer"));
  const bool isResponse = view(root->name) == "Response";
  if (isResponse || view(root->name) == "LogoutResponse") {
    answers.statusCodes = statusCodesBelow(root);
  }
  if (isResponse) walkAssertions(root, answers);
  return answers.text();
}

}  // namespace fuzz
