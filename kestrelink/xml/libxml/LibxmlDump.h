#pragma once

#include <optional>
#include <string>

struct _xmlNode;

namespace kestrelink {

/// Writes the node and all below it as indented XML text, without an XML declaration; `text` stays
/// `std::nullopt` when nothing is written. False when no buffer could be made.
bool dumpXml(_xmlNode* node, std::optional<std::string>& text);

/// Whether the names of namespaces are written with their markup as references: from libxml2 2.13
/// on, whatever version the library was compiled with. Before, they were written as they are.
bool libxmlEscapesNamespaceNames();

}  // namespace kestrelink
