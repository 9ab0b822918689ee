#include "kestrelink/xml/XMLWrapperSchema.h"

#include <climits>
#include <cstdarg>
#include <cstdio>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include <libxml/xmlschemas.h>

#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/xml/StoreError.h"
#include "kestrelink/xml/libxml/EntityLoader.h"
#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"
#include "kestrelink/xml/libxml/LibxmlSetup.h"
#include "kestrelink/xml/libxml/LibxmlText.h"

namespace kestrelink {
namespace {

std::string formatted(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (length <= 0) return {};
  std::string text(static_cast<std::size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

// libxml2's message is a printf format for the arguments.
void logCompilation(const char* prefix, const char* message, va_list arguments) noexcept {
  try {
    logDiagnostic(formatted((std::string(prefix) + message).c_str(), arguments));
  } catch (const std::bad_alloc&) {
    logDiagnostic(prefix);
  }
}

void XMLWSchemaValidityError(void* /*context*/, const char* message, ...) noexcept {
  va_list arguments;
  va_start(arguments, message);
  logCompilation("XML SCHEMA VALIDITY ERROR: ", message, arguments);
  va_end(arguments);
}

void XMLWSchemaValidityWarning(void* /*context*/, const char* message, ...) noexcept {
  va_list arguments;
  va_start(arguments, message);
  logCompilation("XML SCHEMA VALIDITY WARNING: ", message, arguments);
  va_end(arguments);
}

/// Clears a document's URL while this object lives. For each error in a document with a URL, even
/// an empty one, libxml2 walks over all earlier siblings of the node: quadratic time.
class WithoutUrl {
 public:
  explicit WithoutUrl(xmlDoc& doc) : doc_(doc), url_(std::exchange(doc.URL, nullptr)) {}
  ~WithoutUrl() { doc_.URL = url_; }
  WithoutUrl(const WithoutUrl&) = delete;
  WithoutUrl& operator=(const WithoutUrl&) = delete;

  std::string_view url() const { return viewOf(url_); }

 private:
  xmlDoc& doc_;
  decltype(xmlDoc::URL) url_;
};

/// The errors of one validation, one below the other. A hostile message can have an error in every
/// byte, and each may quote a long name: what comes after the first megabyte is only counted.
class ErrorDescription {
 public:
  explicit ErrorDescription(std::string_view url) : url_(url) {}

  void add(const xmlError& error) {
    if (isFull()) return;
    text_.append("ERROR ").append(std::to_string(error.code)).append(": ");
    text_.append(error.file == nullptr ? url_ : error.file);
    text_.append(" line ").append(std::to_string(error.line)).append(": ");
    text_.append(error.message == nullptr ? "" : error.message).append("\n");
  }
  void add(const char* format, va_list arguments) {
    if (!isFull()) text_ += formatted(format, arguments);
  }

  std::string text() && {
    if (more_ > 0) text_.append(std::to_string(more_)).append(" more errors\n");
    return std::move(text_);
  }

 private:
  bool isFull() {
    constexpr std::size_t kMostBytes = 1'000'000;
    if (text_.size() < kMostBytes) return false;
    ++more_;
    return true;
  }

  std::string_view url_;
  std::string text_;
  std::size_t more_ = 0;
};

void XMLWSchemaValidityErrorFunc(void* context, const char* message, ...) noexcept {
  if (message == nullptr) return;
  auto& description = *static_cast<ErrorDescription*>(context);
  va_list arguments;
  va_start(arguments, message);
  try {
    if (const xmlError* const last = libxmlLastError()) {
      description.add(*last);
    } else {
      description.add(message, arguments);
    }
  } catch (const std::bad_alloc&) {
    LibxmlErrorRoute::noteOutOfMemory();
  }
  va_end(arguments);
}

std::unique_ptr<XMLWrapperSchema> failed(std::string_view reason) {
  logDiagnostic(reason);
  return nullptr;
}

XmlDocOwner parseSchema(const SharedBytes& bytes) {
  if (!bytes || bytes->size() > INT_MAX) return nullptr;
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
  XmlDocOwner doc(
      xmlReadMemory(bytes->data(), static_cast<int>(bytes->size()), nullptr, nullptr, 0));
  route.throwIfOutOfMemory();
  return doc;
}

}  // namespace

std::unique_ptr<XMLWrapperSchema> XMLWrapperSchema::initWithSchemaData(
    const SharedBytes& schemaData) {
  ensureLibxmlSchemaTypes();
  // Declared first: the parser context below reads it until it is freed.
  const XmlDocOwner doc = parseSchema(schemaData);
  if (!doc) return failed("Schema could not be loaded");
  installEntityLoader();

  const LibxmlErrorRoute route(LibxmlErrorRoute::During::schema);
  const XmlSchemaParserOwner parser(xmlSchemaNewDocParserCtxt(doc.get()));
  route.throwIfOutOfMemory();
  if (!parser) return failed("Failed to create parser context for schema");
  xmlSchemaSetParserErrors(parser.get(), &XMLWSchemaValidityError, &XMLWSchemaValidityWarning,
                           nullptr);
  XmlSchemaOwner schema(xmlSchemaParse(parser.get()));
  route.throwIfOutOfMemory();  // or an import could be missing
  if (!schema) return failed("Schema is not valid");
  return std::make_unique<XMLWrapperSchema>(std::move(schema));
}

bool XMLWrapperSchema::validateDocument(xmlDoc* doc, ErrorOut error) const {
  const auto impossible = [error](std::string_view reason) {
    logDiagnostic(reason);
    storeSchemaError(error, reason);
    return false;
  };
  if (doc == nullptr || !schemaPtr_) {
    return impossible("Invalid docPtr or schemaPtr given for validating DOM Document");
  }
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::schema);
  const XmlSchemaValidatorOwner validator(xmlSchemaNewValidCtxt(schemaPtr_.get()));
  route.throwIfOutOfMemory();
  if (!validator) return impossible(kSchemaContextFailure);

  const WithoutUrl withoutUrl(*doc);
  ErrorDescription description(withoutUrl.url());
  xmlSchemaSetValidErrors(validator.get(), &XMLWSchemaValidityErrorFunc, nullptr, &description);
  const bool valid = xmlSchemaValidateDoc(validator.get(), doc) == 0;
  route.throwIfOutOfMemory();
  if (!valid) storeSchemaError(error, std::move(description).text());
  return valid;
}

void storeSchemaError(ErrorOut error, std::string_view description) {
  storeError(error, kXMLWrapperErrorDomain, kXMLWrapperErrorNotValid, kLocalizedDescriptionKey,
             description);
}

}  // namespace kestrelink
