// The calls that the library makes to libxml2, without the library. Whoever makes them looks at
// what they return and at the errors they report; what is wrong all the same is libxml2's own.

#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlschemas.h>
#include <libxml/xmlschemastypes.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include "tests/stress/Faults.h"
#include "tests/stress/Operations.h"

namespace stress {
namespace {

struct Free {
  void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
  void operator()(xmlSchema* schema) const { xmlSchemaFree(schema); }
  void operator()(xmlSchemaParserCtxt* context) const { xmlSchemaFreeParserCtxt(context); }
  void operator()(xmlSchemaValidCtxt* context) const { xmlSchemaFreeValidCtxt(context); }
  void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
  void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
};
template <class Handle>
using Owned = std::unique_ptr<Handle, Free>;

const xmlChar* text(const char* characters) { return reinterpret_cast<const xmlChar*>(characters); }

bool outOfMemory = false;
void note(void* /*context*/, const char* /*format*/, ...) {
  const xmlError* const last = xmlGetLastError();
  if (last != nullptr && last->code == XML_ERR_NO_MEMORY) outOfMemory = true;
}

void listen() {
  outOfMemory = false;
  xmlResetLastError();
  xmlSetGenericErrorFunc(nullptr, &note);
}

const Answer kAbsent{true, ""};

xmlDoc* parsed(const std::string& bytes, const char* url) {
  return xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), url, nullptr, 0);
}

std::string schemaFile(const std::string& name) {
  std::ifstream file(SCHEMAS "/" + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

xmlParserInput* load(const char* url, const char* /*identifier*/, xmlParserCtxt* context) {
  if (url == nullptr || !std::string_view(url).ends_with(".xsd")) return nullptr;
  const char* const slash = std::strrchr(url, '/');
  const std::string file = schemaFile(slash == nullptr ? url : slash + 1);
  xmlParserInputBuffer* const buffer = xmlParserInputBufferCreateMem(
      file.data(), static_cast<int>(file.size()), XML_CHAR_ENCODING_NONE);
  if (buffer == nullptr) return nullptr;
  xmlParserInput* const stream = xmlNewIOInputStream(context, buffer, XML_CHAR_ENCODING_NONE);
  if (stream == nullptr) xmlFreeParserInputBuffer(buffer);
  return stream;
}

bool schemaTypesMade() {
  xmlSchemaInitTypes();
  bool all = !outOfMemory;
  for (int value = XML_SCHEMAS_STRING; all && value <= XML_SCHEMAS_ANYSIMPLETYPE; ++value) {
    const xmlSchemaType* const type = xmlSchemaGetBuiltInType(static_cast<xmlSchemaValType>(value));
    all = type != nullptr && xmlSchemaGetPredefinedType(type->name, type->targetNamespace) == type;
  }
  if (!all) xmlSchemaCleanupTypes();
  return all;
}

// Absent when libxml2 said that memory ran out.
std::optional<bool> isValid(const std::string& text) {
  const std::string protocol = schemaFile("saml-schema-protocol-2.0.xsd");
  const Owned<xmlDoc> message(parsed(text, ""));
  const FaultWindow faults;
  listen();
  if (!schemaTypesMade()) return std::nullopt;
  const Owned<xmlDoc> doc(parsed(protocol, nullptr));
  if (!doc) return std::nullopt;
  xmlSetExternalEntityLoader(&load);
  const Owned<xmlSchemaParserCtxt> parser(xmlSchemaNewDocParserCtxt(doc.get()));
  if (!parser) return std::nullopt;
  xmlSchemaSetParserErrors(parser.get(), &note, &note, nullptr);
  const Owned<xmlSchema> schema(xmlSchemaParse(parser.get()));
  if (outOfMemory) return std::nullopt;
  if (!schema) return false;
  const Owned<xmlSchemaValidCtxt> validator(xmlSchemaNewValidCtxt(schema.get()));
  if (!validator || outOfMemory) return std::nullopt;
  xmlSchemaSetValidErrors(validator.get(), &note, nullptr, nullptr);
  const int verdict = xmlSchemaValidateDoc(validator.get(), message.get());
  if (outOfMemory) return std::nullopt;
  return verdict == 0;
}

// Found not valid without a word of memory is a wrong answer.
Answer validate() {
  const auto valid = isValid(sample());
  return valid ? Answer{false, *valid ? "valid" : "not valid"} : kAbsent;
}

Answer refuse() {
  const auto valid = isValid(sampleWithStranger());
  return valid && *valid ? Answer{false, "valid"} : kAbsent;
}

Answer evaluate() {
  const Owned<xmlDoc> doc(parsed(sample(), ""));
  const FaultWindow faults;
  listen();
  const Owned<xmlXPathContext> context(xmlXPathNewContext(doc.get()));
  if (!context) return kAbsent;
  xmlXPathSetContextNode(xmlDocGetRootElement(doc.get()), context.get());
  xmlXPathRegisterNs(context.get(), text("saml"), text("urn:oasis:names:tc:SAML:2.0:assertion"));
  const Owned<xmlXPathObject> result(xmlXPathEvalExpression(
      text("//saml:Attribute[starts-with(@Name, 'Postal')]/* | //@Recipient | "
           "//saml:*[text()='sv']"),
      context.get()));
  if (!result || outOfMemory || result->nodesetval == nullptr) return kAbsent;
  return {false, std::to_string(result->nodesetval->nodeNr)};
}

}  // namespace

const std::vector<Operation>& rawOperations() {
  static const std::vector<Operation> all = {
      {"raw-validate", &validate, {""}, 1, true},
      {"raw-refuse", &refuse, {""}, 1, true},
      {"raw-xpath", &evaluate, {""}, 1, true},
  };
  return all;
}

}  // namespace stress
