// Parsing with bounds on time and memory.
#pragma once

#include <string>

#include "kestrelink/xml/libxml/LibxmlHandles.h"

namespace kestrelink {

/// Parses a message as `xmlReadMemory` does in recovery mode with no other option: entities stay
/// unexpanded, no DTD is loaded. Null when libxml2 makes no tree.
///
/// Null too, with a line in the log, for a message on which libxml2 would spend time or memory out
/// of proportion to its size:
/// - more than 5,000 attributes in one tag;
/// - more comparisons of names than a hundred million plus twenty for each byte: of attributes with
///   those before them in the tag, of prefixes with the namespaces in scope, of names and
///   identifiers with others of the message;
/// - a document type declaration in a message of more than 16 KB, or with more than 100 references
///   to the entities that it declares.
///
/// The first two hold before libxml2 2.12, which has hash tables.
XmlDocOwner boundedParse(const std::string& bytes);

}  // namespace kestrelink
