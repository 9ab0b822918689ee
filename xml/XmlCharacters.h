// What XML 1.0 allows in a message.
#pragma once

#include <string>
#include <string_view>

namespace kestrelink {

/// The text with every character that XML forbids, and every byte that is not UTF-8, replaced by
/// U+FFFD, so that whatever a client sets yields a message that can be read.
std::string writableText(std::string_view text);

/// Whether the text is an XML name, with or without a prefix.
bool isXmlName(std::string_view name);

/// Whether the text is an XML name without a colon.
bool isXmlNCName(std::string_view name);

}  // namespace kestrelink
