// What differs between libxml2 2.9 and 2.15, in one place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlschemastypes.h>
#include <libxml/xmlversion.h>

#include "kestrelink/xml/libxml/LibxmlHandles.h"

namespace kestrelink {

#if LIBXML_VERSION >= 21200
using LibxmlErrorRecord = const xmlError*;
#else
using LibxmlErrorRecord = xmlErrorPtr;
#endif

/// This thread's last error, or null.
inline const xmlError* libxmlLastError() noexcept { return xmlGetLastError(); }

/// Initialises the parser. 2.9 treats its table of encodings as complete even when it ran out of
/// memory; after `libxmlForgetEncodings` it is built again.
inline void libxmlInitialise() noexcept {
  xmlInitParser();
#if LIBXML_VERSION < 21000
  xmlInitCharEncodingHandlers();
#endif
}
inline void libxmlForgetEncodings() noexcept {
#if LIBXML_VERSION < 21000
  xmlCleanupCharEncodingHandlers();
#endif
}

/// Frees the table of schema types, so that it is built again. Only for a table that is incomplete.
/// The function is deprecated from 2.12 on, because programs must not call it when they end.
inline void libxmlForgetSchemaTypes() noexcept {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  xmlSchemaCleanupTypes();
#pragma GCC diagnostic pop
}

/// An input stream over a copy of the text, which libxml2 owns; null when it cannot be made. (A
/// plain string stream would read the text itself, in 2.9 even after it is gone.)
inline xmlParserInput* libxmlStreamOver(xmlParserCtxt* context, const char* text, int length) {
  XmlInputBufferOwner copy(xmlParserInputBufferCreateMem(text, length, XML_CHAR_ENCODING_NONE));
  if (!copy) return nullptr;
  xmlParserInput* const stream = xmlNewIOInputStream(context, copy.get(), XML_CHAR_ENCODING_NONE);
  // From 2.14 on libxml2 takes the buffer even when it fails.
  const bool taken = stream != nullptr || LIBXML_VERSION >= 21400;
  if (taken) static_cast<void>(copy.release());
  return stream;
}

#if LIBXML_VERSION < 21200

/// The input that the parser has not read yet, converted to UTF-8.
inline std::string_view libxmlTextAhead(xmlParserInput& input) noexcept {
  if (input.buf != nullptr && input.buf->encoder != nullptr) {
    const std::ptrdiff_t read = input.cur - input.base;
    constexpr int kAtLeast = 4000;
    while (xmlParserInputBufferGrow(input.buf, kAtLeast) > 0) {
    }
    input.base = xmlBufContent(input.buf->buffer);
    input.cur = input.base + read;
    input.end = input.base + xmlBufUse(input.buf->buffer);
  }
  return {reinterpret_cast<const char*>(input.cur),
          static_cast<std::size_t>(input.end - input.cur)};
}

/// The names that libxml2 keeps: every different one of the message so far.
inline std::uint64_t libxmlNamesKept(const xmlParserCtxt& parser) noexcept {
  return static_cast<std::uint64_t>(xmlDictSize(parser.dict));
}

// An entry of a hash chain counts as that many comparisons, because it lies far from the one before
// it in memory. The number of chains is fixed.
constexpr std::uint64_t kLibxmlFarApart = 50;

/// The comparisons with which libxml2 looks up so many names: each with the entries of a chain.
inline std::uint64_t libxmlComparisonsOfNames(std::uint64_t namesKept,
                                              std::uint64_t names) noexcept {
  constexpr std::uint64_t kListsOfNames = 4608;
  return kLibxmlFarApart * (namesKept / kListsOfNames) * names;
}

/// The other comparisons that libxml2 makes for one tag: each attribute and namespace with those
/// before it, each prefix with the namespaces in scope, and each identifier with the entries of a
/// chain. Prefixes are compared byte by byte, and may begin alike. The products need 64 bits.
inline std::uint64_t libxmlComparisons(const xmlParserCtxt& parser, int namespaceCount,
                                       int attributeCount, std::uint64_t bytesOfPrefixes,
                                       std::uint64_t identifiersOfMessage) noexcept {
  const auto namespaces = static_cast<std::uint64_t>(namespaceCount);
  const auto attributes = static_cast<std::uint64_t>(attributeCount);
  const auto inScope = static_cast<std::uint64_t>(parser.nsNr) / 2;
  // Validation compares an identifier with half of its chain, two places in memory each. For
  // simplicity it is counted for every tag, which is an upper bound.
  constexpr std::uint64_t kListsOfIdentifiers = 16384;
  const std::uint64_t identifiersInList = identifiersOfMessage / kListsOfIdentifiers;
  return (namespaces * namespaces + attributes * attributes) / 2 +
         inScope * (attributes + 1 + bytesOfPrefixes / 4) + kLibxmlFarApart * identifiersInList;
}

#else  // hash tables from here on

inline std::string_view libxmlTextAhead(const xmlParserInput& /*input*/) noexcept { return {}; }
inline std::uint64_t libxmlNamesKept(const xmlParserCtxt& /*parser*/) noexcept { return 0; }
inline std::uint64_t libxmlComparisonsOfNames(std::uint64_t /*namesKept*/,
                                              std::uint64_t /*names*/) noexcept {
  return 0;
}
inline std::uint64_t libxmlComparisons(const xmlParserCtxt& /*parser*/, int /*namespaceCount*/,
                                       int /*attributeCount*/, std::uint64_t /*bytesOfPrefixes*/,
                                       std::uint64_t /*identifiersOfMessage*/) noexcept {
  return 0;
}

#endif

}  // namespace kestrelink
