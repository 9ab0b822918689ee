#include "kestrelink/xml/libxml/BoundedParse.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>
#include <utility>

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

// Attributes that the schemas or XML declare as type ID: "ID", "Id" and "id".
bool isNameOfIdentifiers(const xmlChar* name) {
  return (name[0] == 'I' || name[0] == 'i') && (name[1] == 'D' || name[1] == 'd') && name[2] == 0;
}

class Parser {
 public:
  Parser(const std::string& bytes, MessageCost& cost)
      : bytes_(bytes), cost_(cost), parser_(xmlNewParserCtxt()) {}

  XmlDocOwner parse();

 private:
  static Parser& of(void* context) {
    return *static_cast<Parser*>(static_cast<xmlParserCtxt*>(context)->_private);
  }

  static void startDocument(void* context) noexcept;
  static void internalSubset(void* context, const xmlChar* name, const xmlChar* publicId,
                             const xmlChar* systemId) noexcept;
  static void externalSubset(void* context, const xmlChar* name, const xmlChar* publicId,
                             const xmlChar* systemId) noexcept;
  static xmlEntity* entity(void* context, const xmlChar* name) noexcept;
  static xmlEntity* parameterEntity(void* context, const xmlChar* name) noexcept;
  static void reference(void* context, const xmlChar* name) noexcept;
  static void startElement(void* context, const xmlChar* name, const xmlChar* prefix,
                           const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                           int attributeCount, int defaultedCount,
                           const xmlChar** attributes) noexcept;
  static void endElement(void* context, const xmlChar* name, const xmlChar* prefix,
                         const xmlChar* uri) noexcept;
  static void characters(void* context, const xmlChar* text, int length) noexcept;
  static void cdata(void* context, const xmlChar* text, int length) noexcept;
  static void comment(void* context, const xmlChar* text) noexcept;
  static void instruction(void* context, const xmlChar* target, const xmlChar* data) noexcept;

  void countTag(const xmlParserCtxt& parser, const xmlChar* name, const xmlChar* prefix,
                const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                int attributeCount, const xmlChar** attributes);
  std::uint64_t countAttributes(const xmlParserCtxt& parser, const xmlChar** attributes, int count);
  void countNames(const xmlParserCtxt& parser, std::uint64_t atLeast);
  void countReferences(const xmlParserCtxt& parser, std::string_view value);
  void countReference(const xmlParserCtxt& parser, const xmlChar* name);
  // In a callback, through which nothing may be thrown.
  static void stopOutOfMemory(xmlParserCtxt* context) noexcept {
    LibxmlErrorRoute::noteOutOfMemory();
    xmlStopParser(context);
  }

  const std::string& bytes_;
  MessageCost& cost_;
  XmlParserOwner parser_;
  std::uint64_t identifiers_ = 0;
  std::uint64_t namesKept_ = 0;
  bool hasDocumentType_ = false;
  bool isInDocumentType_ = false;
};

XmlDocOwner Parser::parse() {
  if (!parser_) return nullptr;
  parser_->_private = this;
  xmlSAXHandler& handler = *parser_->sax;
  handler.startDocument = &startDocument;
  handler.internalSubset = &internalSubset;
  handler.externalSubset = &externalSubset;
  handler.getEntity = &entity;
  handler.getParameterEntity = &parameterEntity;
  handler.reference = &reference;
  handler.startElementNs = &startElement;
  handler.endElementNs = &endElement;
  handler.characters = handler.ignorableWhitespace = &characters;
  handler.cdataBlock = &cdata;
  handler.comment = &comment;
  handler.processingInstruction = &instruction;
  XmlDocOwner doc(xmlCtxtReadMemory(parser_.get(), bytes_.data(), static_cast<int>(bytes_.size()),
                                    "", nullptr, XML_PARSE_RECOVER));
  const MessageCost::Allowance* const exceeded = cost_.exceeded();
  if (exceeded == nullptr) return doc;
  logDiagnostic(std::string("A message that would take too much time or memory was refused: ") +
                exceeded->of);
  return nullptr;
}

// Called when the encoding is known and no tag has been read.
void Parser::startDocument(void* context) noexcept {
  auto* const parser = static_cast<xmlParserCtxt*>(context);
  Parser& self = of(context);
  const auto most = static_cast<std::size_t>(self.cost_.allowed(MessageCost::attributesOfATag));
  try {
    if (mayHoldTagWithMoreAttributes(self.bytes_.size(), most) &&
        hasTagWithMoreAttributes(libxmlTextAhead(*parser->input), most)) {
      self.cost_.add(MessageCost::attributesOfATag, most + 1);
      return xmlStopParser(parser);
    }
  } catch (const std::bad_alloc&) {
    return stopOutOfMemory(parser);
  }
  xmlSAX2StartDocument(context);
}

void Parser::internalSubset(void* context, const xmlChar* name, const xmlChar* publicId,
                            const xmlChar* systemId) noexcept {
  Parser& self = of(context);
  self.hasDocumentType_ = self.isInDocumentType_ = true;
  self.cost_.add(MessageCost::bytesWithDocumentType, self.bytes_.size());
  if (self.cost_.exceeded() != nullptr) return xmlStopParser(static_cast<xmlParserCtxt*>(context));
  xmlSAX2InternalSubset(context, name, publicId, systemId);
}

// Called after the internal subset, whether there is an external one or not.
void Parser::externalSubset(void* context, const xmlChar* name, const xmlChar* publicId,
                            const xmlChar* systemId) noexcept {
  of(context).isInDocumentType_ = false;
  xmlSAX2ExternalSubset(context, name, publicId, systemId);
}

// Stopping the parser inside a document type declaration would not end it: libxml2 2.9 goes on to
// skip blanks. An unknown entity has no content, so it soon comes to the first tag, which stops it.
xmlEntity* Parser::entity(void* context, const xmlChar* name) noexcept {
  auto* const parser = static_cast<xmlParserCtxt*>(context);
  Parser& self = of(context);
  self.countNames(*parser, 1);
  if (self.isInDocumentType_) self.cost_.add(MessageCost::entitiesLookedUp, 1);
  if (self.cost_.exceeded() == nullptr) return xmlSAX2GetEntity(context, name);
  if (!self.isInDocumentType_) xmlStopParser(parser);
  return nullptr;
}

xmlEntity* Parser::parameterEntity(void* context, const xmlChar* name) noexcept {
  Parser& self = of(context);
  self.cost_.add(MessageCost::entitiesLookedUp, 1);
  return self.cost_.exceeded() != nullptr ? nullptr : xmlSAX2GetParameterEntity(context, name);
}

void Parser::reference(void* context, const xmlChar* name) noexcept {
  auto* const parser = static_cast<xmlParserCtxt*>(context);
  Parser& self = of(context);
  self.countReference(*parser, name);
  self.cost_.endPiece();
  if (self.cost_.exceeded() != nullptr) return xmlStopParser(parser);
  xmlSAX2Reference(context, name);
}

void Parser::startElement(void* context, const xmlChar* name, const xmlChar* prefix,
                          const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                          int attributeCount, int defaultedCount,
                          const xmlChar** attributes) noexcept {
  auto* const parser = static_cast<xmlParserCtxt*>(context);
  Parser& self = of(context);
  try {
    self.countTag(*parser, name, prefix, uri, namespaceCount, namespaces, attributeCount,
                  attributes);
  } catch (const std::bad_alloc&) {
    return stopOutOfMemory(parser);
  }
  if (self.cost_.exceeded() != nullptr) return xmlStopParser(parser);
  xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount,
                        defaultedCount, attributes);
}

void Parser::endElement(void* context, const xmlChar* name, const xmlChar* prefix,
                        const xmlChar* uri) noexcept {
  of(context).cost_.endTag();
  xmlSAX2EndElementNs(context, name, prefix, uri);
}

void Parser::characters(void* context, const xmlChar* text, int length) noexcept {
  of(context).cost_.text(static_cast<std::size_t>(length));
  xmlSAX2Characters(context, text, length);
}

void Parser::cdata(void* context, const xmlChar* text, int length) noexcept {
  MessageCost& cost = of(context).cost_;
  cost.endPiece();
  cost.text(static_cast<std::size_t>(length));
  cost.endPiece();
  xmlSAX2CDataBlock(context, text, length);
}

void Parser::comment(void* context, const xmlChar* text) noexcept {
  of(context).cost_.endPiece();
  xmlSAX2Comment(context, text);
}

void Parser::instruction(void* context, const xmlChar* target, const xmlChar* data) noexcept {
  auto* const parser = static_cast<xmlParserCtxt*>(context);
  Parser& self = of(context);
  self.countNames(*parser, 1);
  self.cost_.endPiece();
  if (self.cost_.exceeded() != nullptr && !self.isInDocumentType_) return xmlStopParser(parser);
  xmlSAX2ProcessingInstruction(context, target, data);
}

void Parser::countTag(const xmlParserCtxt& parser, const xmlChar* name, const xmlChar* prefix,
                      const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                      int attributeCount, const xmlChar** attributes) {
  for (int index = 0; index < namespaceCount; ++index) {
    const xmlChar* const* const declared = namespaces + std::ptrdiff_t{2} * index;
    cost_.declare(declared[0], declared[1]);
  }
  const std::uint64_t bytesOfPrefixes =
      cost_.lengthOf(prefix) + countAttributes(parser, attributes, attributeCount);
  cost_.startTag(name, uri);
  countNames(parser, static_cast<std::uint64_t>(attributeCount) + 1);
  cost_.add(MessageCost::comparisons, libxmlComparisons(parser, namespaceCount, attributeCount,
                                                        bytesOfPrefixes, identifiers_));
}

// The names that libxml2 looked up since the last call. Some it does not pass on, for example those
// of namespaces that it refuses; those that are new show in what it keeps.
void Parser::countNames(const xmlParserCtxt& parser, std::uint64_t atLeast) {
  const std::uint64_t before = std::exchange(namesKept_, libxmlNamesKept(parser));
  cost_.add(MessageCost::comparisons,
            libxmlComparisonsOfNames(namesKept_, std::max(atLeast, namesKept_ - before)));
}

// libxml2 passes each attribute as five pointers: local name, prefix, URI, start and end of value.
// Returns the bytes of all prefixes.
std::uint64_t Parser::countAttributes(const xmlParserCtxt& parser, const xmlChar** attributes,
                                      int count) {
  std::uint64_t bytesOfPrefixes = 0;
  for (int index = 0; index < count; ++index) {
    const xmlChar* const* const attribute = attributes + std::ptrdiff_t{5} * index;
    cost_.attribute(attribute[0], attribute[2]);
    bytesOfPrefixes += cost_.lengthOf(attribute[1]);
    if (isNameOfIdentifiers(attribute[0])) ++identifiers_;
    if (!hasDocumentType_) continue;
    const auto length = static_cast<std::size_t>(attribute[4] - attribute[3]);
    countReferences(parser, viewOf(attribute[3]).substr(0, length));
  }
  return bytesOfPrefixes;
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
  if (entity != nullptr && entity->etype != XML_INTERNAL_PREDEFINED_ENTITY) {
    cost_.add(MessageCost::entityReferences, 1);
  }
}

}  // namespace

XmlDocOwner boundedParse(const std::string& bytes, MessageCost& cost) {
  if (bytes.size() > INT_MAX) return nullptr;
  ensureLibxmlParser();
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
  XmlDocOwner doc = Parser(bytes, cost).parse();
  route.throwIfOutOfMemory();  // recovery mode returns a partial tree
  return doc;
}

XmlDocOwner boundedParse(const std::string& bytes) {
  MessageCost cost(bytes.size());
  return boundedParse(bytes, cost);
}

}  // namespace kestrelink
