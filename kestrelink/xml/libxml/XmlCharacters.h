// What XML 1.0 allows in a message.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrelink {

/// The text with every character that XML forbids, and every byte that is not UTF-8, replaced by
/// U+FFFD, so that every text a client sets yields a well-formed message. `std::nullopt` when
/// nothing has to be replaced.
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
