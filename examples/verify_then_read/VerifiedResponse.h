#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace verify_then_read {

/// What the holder of the certificate's key signed of a provider's response or logout response, as
/// the XML text of a new one; `std::nullopt`, with the reason, when it cannot be trusted.
///
///     std::string reason;
///     const auto trusted = verifiedResponse(text, certificate, reason);
///     if (trusted) controller.parseResponse(*trusted);  // never the text that came in
///
/// The certificate (PEM) holds the key and no more: its dates and issuer are not looked at, and
/// keys and certificates that the message brings along are never used. No file and no URL is read.
/// May be called from several threads at once.
std::optional<std::string> verifiedResponse(std::string_view response,
                                            std::string_view certificatePem, std::string& reason);

}  // namespace verify_then_read
