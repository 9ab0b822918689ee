#pragma once

#include <optional>
#include <string>

struct _xmlNode;

namespace kestrelink {

/// Writes the node and all below it as indented XML text, without an XML declaration; `text` stays
/// `std::nullopt` when nothing is written. False when no buffer could be made.
bool dumpXml(_xmlNode* node, std::optional<std::string>& text);

}  // namespace kestrelink
