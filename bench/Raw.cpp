#include "bench/Raw.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <memory>

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlschemas.h>
#include <uuid/uuid.h>

namespace bench {
namespace {

struct Free {
  void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
  void operator()(xmlSchema* schema) const { xmlSchemaFree(schema); }
  void operator()(xmlSchemaParserCtxt* context) const { xmlSchemaFreeParserCtxt(context); }
  void operator()(xmlSchemaValidCtxt* context) const { xmlSchemaFreeValidCtxt(context); }
  void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
  void operator()(xmlChar* text) const { xmlFree(text); }
};
template <class Handle>
using Owned = std::unique_ptr<Handle, Free>;

void require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "raw: %s\n", what);
  std::exit(1);
}

const xmlChar* xmlText(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

std::string lastComponent(const char* url) {
  const char* const slash = std::strrchr(url, '/');
  return slash == nullptr ? url : slash + 1;
}

// Imports are named by locations on the web; the packages have them as files.
xmlParserInput* loadFromPackages(const char* url, const char* /*id*/, xmlParserCtxt* context) {
  const std::string file = lastComponent(url);
  const char* const folder = file.starts_with("saml") ? OPENSAML_DIR "/" : XMLTOOLING_DIR "/";
  return xmlNewInputFromFile(context, (folder + file).c_str());
}

xmlParserInput* loadFromBundle(const char* url, const char* /*id*/, xmlParserCtxt* context) {
  return xmlNewInputFromFile(context, (BUNDLE_DIR "/" + lastComponent(url)).c_str());
}

std::string protocolSchemaIn(const char* folder) {
  std::ifstream file(std::string(folder) + "/saml-schema-protocol-2.0.xsd");
  return std::string{std::istreambuf_iterator<char>(file), {}};
}

void quiet(void* /*context*/, const char* /*format*/, ...) {}

void validateDocument(xmlDoc* doc, Schema files) {
  static const std::string ofPackages = protocolSchemaIn(OPENSAML_DIR);
  static const std::string ofBundle = protocolSchemaIn(BUNDLE_DIR);
  const bool compact = files == Schema::ofBundle;
  const std::string& protocol = compact ? ofBundle : ofPackages;
  xmlSetExternalEntityLoader(compact ? &loadFromBundle : &loadFromPackages);
  const Owned<xmlSchemaParserCtxt> parser(
      xmlSchemaNewMemParserCtxt(protocol.data(), static_cast<int>(protocol.size())));
  xmlSchemaSetParserErrors(parser.get(), &quiet, &quiet, nullptr);
  const Owned<xmlSchema> schema(xmlSchemaParse(parser.get()));
  require(schema != nullptr, "the schema does not compile");
  const Owned<xmlSchemaValidCtxt> validator(xmlSchemaNewValidCtxt(schema.get()));
  require(xmlSchemaValidateDoc(validator.get(), doc) == 0, "the message is not valid");
}

bool is(const xmlNode* node, const char* name) {
  return node->type == XML_ELEMENT_NODE && xmlStrEqual(node->name, xmlText(name)) != 0;
}

xmlNode* child(const xmlNode* parent, const char* name) {
  xmlNode* node = parent == nullptr ? nullptr : parent->children;
  while (node != nullptr && !is(node, name)) node = node->next;
  return node;
}

std::string text(xmlNode* node) {
  if (node == nullptr) return {};
  const Owned<xmlChar> content(xmlNodeGetContent(node));
  return reinterpret_cast<const char*>(content.get());
}

std::string attribute(xmlNode* node, const char* name) {
  if (node == nullptr) return {};
  const Owned<xmlChar> value(xmlGetNoNsProp(node, xmlText(name)));
  return value ? reinterpret_cast<const char*>(value.get()) : "";
}

}  // namespace

RawValues rawRead(std::string_view message, Schema schema) {
  const Owned<xmlDoc> doc(
      xmlReadMemory(message.data(), static_cast<int>(message.size()), "", nullptr, 0));
  require(doc != nullptr, "the message does not parse");
  if (schema != Schema::none) validateDocument(doc.get(), schema);

  RawValues values;
  const xmlNode* const root = xmlDocGetRootElement(doc.get());
  const xmlNode* const assertion = child(root, "Assertion");
  values.issuer = text(child(root, "Issuer"));
  values.status = attribute(child(child(root, "Status"), "StatusCode"), "Value");
  values.sessionEnd = attribute(child(assertion, "AuthnStatement"), "SessionNotOnOrAfter");
  const xmlNode* const statement = child(assertion, "AttributeStatement");
  for (xmlNode* node = statement->children; node != nullptr; node = node->next) {
    if (!is(node, "Attribute")) continue;
    std::vector<std::string> texts;
    for (xmlNode* value = node->children; value != nullptr; value = value->next) {
      if (is(value, "AttributeValue")) texts.push_back(text(value));
    }
    values.attributes.insert_or_assign(attribute(node, "Name"), std::move(texts));
  }
  return values;
}

Stamp newStamp() {
  uuid_t uuid;
  char identifier[UUID_STR_LEN + 1] = "_";
  uuid_generate_random(uuid);
  uuid_unparse_upper(uuid, identifier + 1);
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  gmtime_r(&now, &utc);
  char instant[32];
  std::strftime(instant, sizeof instant, "%Y-%m-%dT%H:%M:%SZ", &utc);
  return {identifier, instant};
}

std::string rawAuthnRequest(const std::string& issuer) {
  const Owned<xmlDoc> doc(xmlNewDoc(xmlText("1.0")));
  xmlNode* const root = xmlNewNode(nullptr, xmlText("AuthnRequest"));
  xmlDocSetRootElement(doc.get(), root);
  xmlNs* const samlp =
      xmlNewNs(root, xmlText("urn:oasis:names:tc:SAML:2.0:protocol"), xmlText("samlp"));
  xmlSetNs(root, samlp);

  const Stamp stamp = newStamp();
  xmlNewProp(root, xmlText("ID"), xmlText(stamp.identifier.c_str()));
  xmlNewProp(root, xmlText("Version"), xmlText("2.0"));
  xmlNewProp(root, xmlText("IssueInstant"), xmlText(stamp.instant.c_str()));

  xmlNode* const issuerNode =
      xmlNewTextChild(root, nullptr, xmlText("Issuer"), xmlText(issuer.c_str()));
  xmlSetNs(issuerNode,
           xmlNewNs(issuerNode, xmlText("urn:oasis:names:tc:SAML:2.0:assertion"), xmlText("saml")));
  xmlNode* const policy = xmlNewChild(root, samlp, xmlText("NameIdPolicy"), nullptr);
  xmlNewProp(policy, xmlText("Format"),
             xmlText("urn:oasis:names:tc:SAML:2.0:nameid-format:transient"));
  xmlNewProp(policy, xmlText("AllowCreate"), xmlText("false"));

  const Owned<xmlBuffer> buffer(xmlBufferCreate());
  xmlNodeDump(buffer.get(), doc.get(), root, 0, 1);
  return reinterpret_cast<const char*>(xmlBufferContent(buffer.get()));
}

}  // namespace bench
