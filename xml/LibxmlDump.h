#pragma once

#include <optional>
#include <string>

#include "kestrelink/xml/ErrorInfo.h"

struct _xmlNode;

namespace kestrelink {

/// The node and all below it as indented XML text, without an XML declaration. Absent when nothing
/// was written, and with code 101 when no buffer could be made.
std::optional<std::string> dumpedXml(_xmlNode* node, ErrorOut error);

}  // namespace kestrelink
