#include "kestrelink/platform/Text.h"

#include "tests/fuzz/Targets.h"
#include "tests/support/Shown.h"

namespace fuzz {
namespace {

using kestrelink::testing::shown;
using Text = std::optional<std::string>;
using Nodes = std::vector<const xmlNode*>;

std::string_view view(const xmlChar* text) {
  return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

Text contentOf(const xmlNode* node) {
  if (node == nullptr || node->type != XML_TEXT_NODE) return std::nullopt;
  return kestrelink::isUtf8(view(node->content)) ? Text(view(node->content)) : std::nullopt;
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
    text += kestrelink::trimmed(contentOf(child).value_or(""));
  }
  return text.empty() ? std::nullopt : Text(text);
}

Text attributeOf(const xmlNode* element, std::string_view name) {
  Text value;
  for (const xmlAttr* each = element ? element->properties : nullptr; each; each = each->next) {
    if (view(each->name) == name) value = contentOf(each->children);
  }
  return value;
}

std::vector<std::string> statusCodesOf(const xmlNode* root) {
  std::vector<std::string> codes;
  const xmlNode* code = childOf(childOf(root, "Status"), "StatusCode");
  for (; const Text value = attributeOf(code, "Value"); code = childOf(code, "StatusCode")) {
    codes.push_back(*value);
  }
  return codes;
}

}  // namespace

Reading readingByHand(const xmlDoc* doc) {
  const xmlNode* root = xmlDocGetRootElement(doc);
  const std::string_view name = root ? view(root->name) : "";
  const Nodes assertions = name == "Response" ? childrenOf(root, "Assertion") : Nodes();
  const xmlNode *subject = nullptr, *session = nullptr, *nameId = nullptr, *statement = nullptr;
  for (const xmlNode* assertion : assertions) {
    if (subject == nullptr) subject = childOf(assertion, "Subject");
    if (session == nullptr) session = childOf(assertion, "AuthnStatement");
  }
  nameId = childOf(subject, "NameID");
  if (nameId == nullptr) nameId = childOf(subject, "NameId");
  if (!assertions.empty()) statement = childOf(assertions.front(), "AttributeStatement");
  const bool isResponse = name == "Response" || name == "LogoutResponse";
  Reading all = {
      {"issuer", shown(textOf(childOf(root, "Issuer")))},
      {"subject", shown(textOf(nameId))},
      {"session index", shown(attributeOf(session, "SessionIndex"))},
      {"session end",
       shown(kestrelink::SAMLDateFromString(attributeOf(session, "SessionNotOnOrAfter")))},
      {"status", shown(isResponse ? statusCodesOf(root) : std::vector<std::string>())}};
  std::erase_if(all, [](const auto& each) { return each.second == "-"; });
  for (const xmlNode* attribute : childrenOf(statement, "Attribute")) {
    const Text key = attributeOf(attribute, "Name");
    std::vector<std::string> values;
    for (const xmlNode* value : childrenOf(attribute, "AttributeValue")) {
      if (const Text text = textOf(value)) values.push_back(*text);
    }
    if (key) all["attribute " + *key] = shown(values);
  }
  return all;
}

}  // namespace fuzz
