// Finds tags that libxml2 would take too long to parse.
#pragma once

#include <cstddef>
#include <string_view>

namespace kestrelink {

/// Whether a message of so many bytes is long enough for a tag with more attributes than that.
bool mayHoldTagWithMoreAttributes(std::size_t bytes, std::size_t attributes);

/// Whether some tag of the message, in UTF-8, has more attributes than that. Text that looks like a
/// tag inside a comment, a CDATA section, a processing instruction or a quoted value does not
/// count. May return true for a malformed message without such a tag.
bool hasTagWithMoreAttributes(std::string_view message, std::size_t attributes);

}  // namespace kestrelink
