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

/// The same for the name of a namespace. libxml2 before 2.13 writes such a name unchanged, so here
/// "<", and every "&" that does not begin a character reference, become references. References that
/// were read are kept. From 2.13 on libxml2 resolves references when it reads a name and escapes
/// the name when it writes it.
std::optional<std::string> replacementForNamespaceName(std::string_view name);

/// Whether the text is an XML name, with or without a prefix.
bool isXmlName(std::string_view name);

/// Whether the text is an XML name without a colon.
bool isXmlNCName(std::string_view name);

}  // namespace kestrelink
