// Parsing with bounds on time and memory.
#pragma once

#include <string>

#include "kestrelink/xml/libxml/LibxmlHandles.h"

namespace kestrelink {

/// Parses a message as `xmlReadMemory` does in recovery mode with no other option: entities stay
/// unexpanded, no DTD is loaded. Null when libxml2 makes no tree, or, with a line in the log, when
/// parsing would take time or memory out of proportion to the message's size. libxml2 compares each
/// attribute of a tag with all before it, adds the attributes a document type declares to every
/// element, looks each prefix up among all namespaces in scope, and keeps the names and the
/// identifiers of a message in few lists. Refused are messages with
/// - more than 5,000 attributes in one tag, or so many attributes, namespaces in scope, different
///   names or identifiers that the comparisons come to more than a hundred million and twenty for
///   every byte;
/// - a document type declaration and more than 16 KB, or more than 100 references to the entities
///   it declares.
XmlDocOwner boundedParse(const std::string& bytes);

}  // namespace kestrelink
