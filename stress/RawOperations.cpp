// The calls that the library makes to libxml2, without the library. Whoever makes them looks at
// what they return and at the errors they report; what is wrong all the same is libxml2's own.

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/uri.h>
#include <libxml/xmlschemas.h>
#include <libxml/xmlschemastypes.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include "Faults.h"
#include "Operations.h"

namespace stress {
namespace {

struct Free {
  void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
  void operator()(xmlNode* node) const { xmlFreeNode(node); }
  void operator()(xmlOutputBuffer* buffer) const { xmlOutputBufferClose(buffer); }
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
void noteError(void* /*context*/, xmlError* error) {
  if (error->code == XML_ERR_NO_MEMORY) outOfMemory = true;
}
void noteGeneric(void* /*context*/, const char* /*format*/, ...) {
  if (const xmlError* const last = xmlGetLastError())
    noteError(nullptr, const_cast<xmlError*>(last));
}

void listen(bool structured) {
  outOfMemory = false;
  xmlResetLastError();
  xmlSetGenericErrorFunc(nullptr, &noteGeneric);
  xmlSetStructuredErrorFunc(nullptr, structured ? &noteError : nullptr);
}

const Answer kAbsent{true, ""};

Answer dumped(xmlNode* node) {
  const Owned<xmlOutputBuffer> buffer(xmlAllocOutputBuffer(nullptr));
  if (!buffer) return kAbsent;
  xmlNodeDumpOutput(buffer.get(), node->doc, node, 0, 1, nullptr);
  const std::size_t size = xmlOutputBufferGetSize(buffer.get());
  if (size == 0) return kAbsent;
  return {false, std::string(reinterpret_cast<const char*>(xmlOutputBufferGetContent(buffer.get())),
                             size)};
}

xmlDoc* parsed(const std::string& bytes, int options) {
  return xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), "", nullptr, options);
}

Answer parse() {
  Owned<xmlDoc> doc;
  {
    const FaultWindow faults;
    listen(true);
    xmlInitParser();
    doc.reset(parsed(sample(), XML_PARSE_RECOVER));
  }
  if (!doc || outOfMemory) return kAbsent;
  return dumped(xmlDocGetRootElement(doc.get()));
}

const std::map<std::string, std::string, std::less<>>& schemaFiles() {
  static const auto files = [] {
    std::map<std::string, std::string, std::less<>> read;
    for (const auto& entry : std::filesystem::directory_iterator(SCHEMAS)) {
      std::ifstream file(entry.path());
      read[entry.path().filename()] = {std::istreambuf_iterator<char>(file), {}};
    }
    return read;
  }();
  return files;
}

xmlParserInput* load(const char* url, const char* /*identifier*/, xmlParserCtxt* context) {
  const char* const slash = std::strrchr(url, '/');
  const std::string& file =
      schemaFiles().find(std::string_view(slash == nullptr ? url : slash + 1))->second;
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
  const std::string& protocol = schemaFiles().find("saml-schema-protocol-2.0.xsd")->second;
  const Owned<xmlDoc> message(parsed(text, 0));
  const FaultWindow faults;
  listen(false);
  if (!schemaTypesMade()) return std::nullopt;
  const Owned<xmlDoc> doc(
      xmlReadMemory(protocol.data(), static_cast<int>(protocol.size()), nullptr, nullptr, 0));
  if (!doc) return std::nullopt;
  xmlSetExternalEntityLoader(&load);
  const Owned<xmlSchemaParserCtxt> parser(xmlSchemaNewDocParserCtxt(doc.get()));
  if (!parser) return std::nullopt;
  xmlSchemaSetParserErrors(parser.get(), &noteGeneric, &noteGeneric, nullptr);
  const Owned<xmlSchema> schema(xmlSchemaParse(parser.get()));
  if (outOfMemory) return std::nullopt;
  if (!schema) return false;
  const Owned<xmlSchemaValidCtxt> validator(xmlSchemaNewValidCtxt(schema.get()));
  if (!validator || outOfMemory) return std::nullopt;
  xmlSchemaSetValidErrors(validator.get(), &noteGeneric, nullptr, nullptr);
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
  const Owned<xmlDoc> doc(parsed(sample(), 0));
  const FaultWindow faults;
  listen(true);
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

Answer write() {
  const FaultWindow faults;
  listen(true);
  xmlInitParser();
  const Owned<xmlDoc> doc(xmlNewDoc(text("2.0")));
  Owned<xmlNode> root(xmlNewNode(nullptr, text("Root")));
  if (!doc || !root) return kAbsent;
  xmlNewProp(root.get(), text("a"), text("b"));
  xmlSetNs(root.get(), xmlNewNs(root.get(), text("urn:r"), text("r")));
  const std::string content(20000, 'x');
  xmlNode* const made = xmlNewText(text(content.c_str()));
  if (made == nullptr || outOfMemory) {
    xmlFreeNode(made);
    return kAbsent;
  }
  xmlAddChild(root.get(), made);
  xmlNode* const written = root.release();
  xmlDocSetRootElement(doc.get(), written);
  return dumped(written);
}

}  // namespace

const std::vector<Operation>& rawOperations() {
  static const std::vector<Operation> all = {
      {"raw-parse", &parse, {""}, 1, true},    {"raw-validate", &validate, {""}, 53, true},
      {"raw-refuse", &refuse, {""}, 59, true}, {"raw-xpath", &evaluate, {""}, 1, true},
      {"raw-write", &write, {""}, 1, true},
  };
  return all;
}

}  // namespace stress
