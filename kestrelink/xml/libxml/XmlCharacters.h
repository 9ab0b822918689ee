// What XML 1.0 allows in a message.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrelink {

/// What to write for a text that cannot be written as it is, so that whatever a client sets yields
/// a message that can be read: the text with every character that XML forbids, and every byte that
/// is not UTF-8, replaced by U+FFFD. Absent for a text that can.
std::optional<std::string> replacementFor(std::string_view text);

/// The same for the name of a namespace, which libxml2 before 2.13 writes as it is: "<", and every
/// "&" that begins no reference to a character, become references. (One that was read keeps those
/// it had.) From 2.13 on libxml2 resolves references when it reads such a name, and writes them.
std::optional<std::string> replacementForNamespaceName(std::string_view name);

/// Whether the text is an XML name, with or without a prefix.
bool isXmlName(std::string_view name);

/// Whether the text is an XML name without a colon.
bool isXmlNCName(std::string_view name);

}  // namespace kestrelink
