// Looks for a tag that libxml2 would take too long to read.
#pragma once

#include <cstddef>
#include <string_view>

namespace kestrelink {

/// Whether so many bytes have room for a tag with more attributes than that.
bool mayHoldTagWithMoreAttributes(std::size_t bytes, std::size_t attributes);

/// Whether some tag of the message, in UTF-8, has more attributes than that; what only looks like
/// one in a text, a comment, a CDATA section, a processing instruction or a quoted value does not
/// count. A message that is damaged where it matters may count as having one.
bool hasTagWithMoreAttributes(std::string_view message, std::size_t attributes);

}  // namespace kestrelink
