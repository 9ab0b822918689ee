#include "kestrelink/xml/libxml/BoundedParse.h"

#include <algorithm>
#include <string_view>

#include <climits>
#include <libxml/SAX2.h>
#include <libxml/parser.h>

#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/xml/libxml/LibxmlCompat.h"
#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"
#include "kestrelink/xml/libxml/LibxmlSetup.h"

namespace kestrelink {
namespace {

constexpr std::size_t kMostAttributesOfATag = 5'000;
constexpr std::size_t kShortestTag =  // with more of them
    kMostAttributesOfATag * std::string_view(" a=''").size();
constexpr std::size_t kMostBytesWithDocumentType = 16'384;
constexpr int kMostEntityReferences = 100;
constexpr std::size_t kComparisonsOfAnyMessage = 100'000'000;
constexpr std::size_t kComparisonsPerByte = 20;

// Every attribute has a quote after its "=", and no "<" stands in a tag.
bool hasManyAttributes(std::string_view betweenTags) {
  std::size_t count = 0;
  for (std::size_t at = betweenTags.find('='); at != std::string_view::npos;
       at = betweenTags.find('=', at + 1)) {
    const std::size_t next = betweenTags.find_first_not_of(" \t\r\n", at + 1);
    if (next == std::string_view::npos) break;
    const bool isAttribute = betweenTags[next] == '"' || betweenTags[next] == '\'';
    if (isAttribute && ++count > kMostAttributesOfATag) return true;
  }
  return false;
}

// Looks from far ahead back to the next "<": all but long runs without one are skipped unread.
bool hasTagWithManyAttributes(std::string_view text) {
  for (std::size_t start = 0; text.size() - start > kShortestTag;) {
    const std::string_view window = text.substr(start, kShortestTag);
    if (const std::size_t last = window.rfind('<'); last != 0 && last != std::string_view::npos) {
      start += last;
      continue;
    }
    const std::size_t end = std::min(text.find('<', start + 1), text.size());
    if (hasManyAttributes(text.substr(start, end - start))) return true;
    start = end;
  }
  return false;
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
  void countReferences(const xmlChar** attributes, int count);
  void refuse(xmlParserCtxt* context) {
    refused_ = true;
    xmlStopParser(context);
  }

  const std::string& bytes_;
  XmlParserOwner parser_;
  std::size_t comparisons_ = 0;
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

// The encoding is known now, and no tag has been read.
void Parser::startDocument(void* context) noexcept {
  auto* const parser = static_cast<xmlParserCtxt*>(context);
  Parser& self = of(context);
  if (self.bytes_.size() > kShortestTag &&
      hasTagWithManyAttributes(libxmlTextAhead(*parser->input))) {
    return self.refuse(parser);
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
  Parser& self = of(context);
  if (++self.references_ > kMostEntityReferences) {
    return self.refuse(static_cast<xmlParserCtxt*>(context));
  }
  xmlSAX2Reference(context, name);
}

void Parser::startElement(void* context, const xmlChar* name, const xmlChar* prefix,
                          const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                          int attributeCount, int defaultedCount,
                          const xmlChar** attributes) noexcept {
  auto* const parser = static_cast<xmlParserCtxt*>(context);
  Parser& self = of(context);
  if (self.hasDocumentType_) self.countReferences(attributes, attributeCount);
  self.comparisons_ += libxmlComparisons(*parser, namespaceCount, attributeCount);
  if (self.comparisons_ > kComparisonsOfAnyMessage + kComparisonsPerByte * self.bytes_.size() ||
      self.references_ > kMostEntityReferences) {
    return self.refuse(parser);
  }
  xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount,
                        defaultedCount, attributes);
}

// libxml2 hands each attribute on as five pointers, the last two around its value.
void Parser::countReferences(const xmlChar** attributes, int count) {
  for (int index = 0; index < count; ++index) {
    const xmlChar* const* const attribute = attributes + std::ptrdiff_t{5} * index;
    references_ += static_cast<int>(std::count(attribute[3], attribute[4], xmlChar{'&'}));
  }
}

}  // namespace

XmlDocOwner boundedParse(const std::string& bytes) {
  if (bytes.size() > INT_MAX) return nullptr;
  ensureLibxmlParser();
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
  XmlDocOwner doc = Parser(bytes).parse();
  route.throwIfOutOfMemory();  // recovery mode keeps what was read before
  return doc;
}

}  // namespace kestrelink
