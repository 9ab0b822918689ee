// What differs between libxml2 2.9 and 2.15, in one place.
#pragma once

#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlversion.h>

namespace kestrelink {

#if LIBXML_VERSION >= 21200
using LibxmlErrorRecord = const xmlError*;
#else
using LibxmlErrorRecord = xmlErrorPtr;
#endif

/// This thread's last error, or null.
inline const xmlError* libxmlLastError() noexcept { return xmlGetLastError(); }

}  // namespace kestrelink
