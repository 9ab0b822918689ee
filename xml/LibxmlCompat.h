// What differs between libxml2 2.9 and 2.15, in one place.
#pragma once

#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlversion.h>

#include "kestrelink/xml/LibxmlHandles.h"

namespace kestrelink {

#if LIBXML_VERSION >= 21200
using LibxmlErrorRecord = const xmlError*;
#else
using LibxmlErrorRecord = xmlErrorPtr;
#endif

/// This thread's last error, or null.
inline const xmlError* libxmlLastError() noexcept { return xmlGetLastError(); }

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

}  // namespace kestrelink
