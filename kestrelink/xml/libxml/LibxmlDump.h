#pragma once

#include <optional>
#include <string>

struct _xmlNode;

namespace kestrelink {

class LibxmlErrorRoute;

/// Writes the node and all below it as indented XML text, without an XML declaration; `text` stays
/// `std::nullopt` when nothing is written. False when no buffer could be made. The route is that of
/// the caller, who makes it before the node; throws `std::bad_alloc` when it reports that.
bool dumpXml(_xmlNode* node, const LibxmlErrorRoute& route, std::optional<std::string>& text);

/// Whether libxml2 escapes markup in the names of namespaces when it writes them: it does from 2.13
/// on. Asks the libxml2 that is loaded, which may not be the version that the library was compiled
/// with.
bool libxmlEscapesNamespaceNames();

}  // namespace kestrelink
