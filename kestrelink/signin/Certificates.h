// Certificates as PEM text, and as metadata have them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrelink::signin {

/// The certificate that an "X509Certificate" holds, as PEM. `std::nullopt` when it holds none.
std::optional<std::string> pemOf(std::string_view base64);

/// The first certificate in PEM text as base64. `std::nullopt` when there is none.
std::optional<std::string> base64OfCertificate(const std::string& pem);

}  // namespace kestrelink::signin
