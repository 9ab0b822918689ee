#include "kestrelink/xml/libxml/BoundedParse.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>

#include <libxml/SAX2.h>
#include <libxml/entities.h>
#include <libxml/parser.h>

#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/xml/libxml/LibxmlCompat.h"
#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"
#include "kestrelink/xml/libxml/LibxmlSetup.h"
#include "kestrelink/xml/libxml/LibxmlText.h"
#include "kestrelink/xml/libxml/OverfullTag.h"

namespace kestrelink {
namespace {

constexpr std::size_t kMostAttributesOfATag = 5'000;
constexpr std::size_t kMostBytesWithDocumentType = 16'384;
constexpr int kMostEntityReferences = 100;
constexpr std::uint64_t kComparisonsOfAnyMessage = 100'000'000;
constexpr std::uint64_t kComparisonsPerByte = 20;

// Attributes that the schemas or XML declare as type ID.
bool isNameOfIdentifiers(std::string_view name) {
  return name == "ID" || name == "Id" || name == "id";
}

class Parser {
 public:
  explicit Parser(const std::string& bytes) : bytes_(bytes), parser_(xmlNewParserCtxt()) {}

  XmlDocOwner parse();

 private:
  static Parser& of(void* context) {
    return *static_cast<Parser*>(static_cast<xmlParserCtxt*>(context)->_private);
  }

  static void startDocument(void* context) noexcept;
  static void internalSubset(void* context, const xmlChar* name, const xmlChar* publicId,
                             const xmlChar* systemId) noexcept;
  static void reference(void* context, const xmlChar* name) noexcept;
  static void startElement(void* context, const xmlChar* name, const xmlChar* prefix,
                           const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                           int attributeCount, int defaultedCount,
                           const xmlChar** attributes) noexcept;
  void count(const xmlParserCtxt& parser, const xmlChar** attributes, int count);
  void countReferences(const xmlParserCtxt& parser, std::string_view value);
  void countReference(const xmlParserCtxt& parser, const xmlChar* name);
  void refuse(xmlParserCtxt* context) {
    refused_ = true;
    xmlStopParser(context);
  }
  // In a callback, through which nothing may be thrown.
  static void stopOutOfMemory(xmlParserCtxt* context) noexcept {
    LibxmlErrorRoute::noteOutOfMemory();
    xmlStopParser(context);
  }

  const std::string& bytes_;
  XmlParserOwner parser_;
  std::uint64_t comparisons_ = 0;
  std::uint64_t identifiers_ = 0;
  int references_ = 0;
  bool hasDocumentType_ = false;
  bool refused_ = false;
};

XmlDocOwner Parser::parse() {
  if (!parser_) return nullptr;
  parser_->_private = this;
  parser_->sax->startDocument = &startDocument;
  parser_->sax->internalSubset = &internalSubset;
  parser_->sax->reference = &reference;
  parser_->sax->startElementNs = &startElement;
  XmlDocOwner doc(xmlCtxtReadMemory(parser_.get(), bytes_.data(), static_cast<int>(bytes_.size()),
                                    "", nullptr, XML_PARSE_RECOVER));
  if (!refused_) return doc;
  logDiagnostic("A message that would take libxml2 too much time or memory was refused");
  return nullptr;
}

// Called when the encoding is known and no tag has been read.
void Parser::startDocument(void* context) noexcept {
  auto* const parser = static_cast<xmlParserCtxt*>(context);
  Parser& self = of(context);
  try {
    if (mayHoldTagWithMoreAttributes(self.bytes_.size(), kMostAttributesOfATag) &&
        hasTagWithMoreAttributes(libxmlTextAhead(*parser->input), kMostAttributesOfATag)) {
      return self.refuse(parser);
    }
  } catch (const std::bad_alloc&) {
    return stopOutOfMemory(parser);
  }
  xmlSAX2StartDocument(context);
}

void Parser::internalSubset(void* context, const xmlChar* name, const xmlChar* publicId,
                            const xmlChar* systemId) noexcept {
  Parser& self = of(context);
  self.hasDocumentType_ = true;
  if (self.bytes_.size() > kMostBytesWithDocumentType) {
    return self.refuse(static_cast<xmlParserCtxt*>(context));
  }
  xmlSAX2InternalSubset(context, name, publicId, systemId);
}

void Parser::reference(void* context, const xmlChar* name) noexcept {
  auto* const parser = static_cast<xmlParserCtxt*>(context);
  Parser& self = of(context);
  self.countReference(*parser, name);
  if (self.references_ > kMostEntityReferences) return self.refuse(parser);
  xmlSAX2Reference(context, name);
}

void Parser::startElement(void* context, const xmlChar* name, const xmlChar* prefix,
                          const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                          int attributeCount, int defaultedCount,
                          const xmlChar** attributes) noexcept {
  auto* const parser = static_cast<xmlParserCtxt*>(context);
  Parser& self = of(context);
  try {
    self.count(*parser, attributes, attributeCount);
  } catch (const std::bad_alloc&) {
    return stopOutOfMemory(parser);
  }
  self.comparisons_ +=
      libxmlComparisons(*parser, namespaceCount, attributeCount, self.identifiers_);
  if (self.comparisons_ > kComparisonsOfAnyMessage + kComparisonsPerByte * self.bytes_.size() ||
      self.references_ > kMostEntityReferences) {
    return self.refuse(parser);
  }
  xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount,
                        defaultedCount, attributes);
}

// libxml2 passes each attribute as five pointers: local name, prefix, URI, start and end of value.
void Parser::count(const xmlParserCtxt& parser, const xmlChar** attributes, int count) {
  for (int index = 0; index < count; ++index) {
    const xmlChar* const* const attribute = attributes + std::ptrdiff_t{5} * index;
    if (isNameOfIdentifiers(viewOf(attribute[0]))) ++identifiers_;
    if (!hasDocumentType_) continue;
    const auto length = static_cast<std::size_t>(attribute[4] - attribute[3]);
    countReferences(parser, viewOf(attribute[3]).substr(0, length));
  }
}

void Parser::countReferences(const xmlParserCtxt& parser, std::string_view value) {
  for (std::size_t at = value.find('&'); at != std::string_view::npos; at = value.find('&', at)) {
    const std::size_t end = value.find(';', at);
    if (end == std::string_view::npos) return;
    countReference(parser, xmlTextOf(std::string(value.substr(at + 1, end - at - 1))));
    at = end;
  }
}

// Only declared entities count: not predefined ones, character references or unknown names.
void Parser::countReference(const xmlParserCtxt& parser, const xmlChar* name) {
  const xmlEntity* const entity = xmlGetDocEntity(parser.myDoc, name);
  if (entity != nullptr && entity->etype != XML_INTERNAL_PREDEFINED_ENTITY) ++references_;
}

}  // namespace

XmlDocOwner boundedParse(const std::string& bytes) {
  if (bytes.size() > INT_MAX) return nullptr;
  ensureLibxmlParser();
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
  XmlDocOwner doc = Parser(bytes).parse();
  route.throwIfOutOfMemory();  // recovery mode returns a partial tree
  return doc;
}

}  // namespace kestrelink
