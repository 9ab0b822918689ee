#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace verify_then_read {

/// What the holder of the certificate's key signed of a provider's answer, as the XML text of a new
/// response; absent, with the reason, when the answer cannot be trusted.
///
///     std::string reason;
///     const auto trusted = verifiedAnswer(text, certificate, reason);
///     if (trusted) controller.parseResponse(*trusted);  // never the text that came in
///
/// The certificate (PEM) is a store for the key and no more: its dates and issuer are not looked
/// at, and keys and certificates that the message brings along are never used. No file and no URL
/// is read. May be called from several threads at once.
std::optional<std::string> verifiedAnswer(std::string_view answer, std::string_view certificatePem,
                                          std::string& reason);

}  // namespace verify_then_read
