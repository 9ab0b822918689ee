#pragma once

#include <optional>
#include <string>

namespace ksaml {

/// The message in the text of a file, out of its binding, as `kestrelink::signin::decode` takes it,
/// of at most 8 MB when it is inflated. With `isBase64` the text must be base64. A text that no
/// binding carries is returned unchanged. `std::nullopt`, with a line on standard error that names
/// the file, when one does that is malformed.
std::optional<std::string> messageIn(const std::string& text, bool isBase64,
                                     const std::string& file);

/// The message in a file, the same way; `std::nullopt` too when the file cannot be read.
std::optional<std::string> messageInFile(const std::string& file, bool isBase64 = false);

}  // namespace ksaml
