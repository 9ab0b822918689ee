// Parsing with bounds on time and memory.
#pragma once

#include <string>

#include "kestrelink/xml/libxml/LibxmlHandles.h"
#include "kestrelink/xml/libxml/MessageCost.h"

namespace kestrelink {

/// Parses a message as `xmlReadMemory` does in recovery mode with no other option: entities stay
/// unexpanded, no DTD is loaded. Null when libxml2 makes no tree.
///
/// Null too, with a line in the log that says which, when the message exceeds an allowance of
/// `MessageCost`.
XmlDocOwner boundedParse(const std::string& bytes);

/// The same, with the costs for whoever wants to know them.
XmlDocOwner boundedParse(const std::string& bytes, MessageCost& cost);

}  // namespace kestrelink
