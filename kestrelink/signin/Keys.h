// Keys of PEM texts, and whose signatures are believed.
#pragma once

#include <openssl/evp.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kestrelink/signin/Policy.h"

namespace kestrelink::signin {

struct ReleaseKey {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
using Key = std::unique_ptr<EVP_PKEY, ReleaseKey>;

/// Whose signatures are believed, and which.
struct Signer {
  const std::vector<std::string>& certificates;  // PEM; any of them
  bool acceptSha1 = false;
  int leastRsaBits = Policy().leastRsaBits;
};

/// Refused unless the signature `isSignedWith` the key of one of the certificates. The rest of a
/// certificate is not looked at. When none is, and one of them cannot be used, that is the reason:
/// `notConfigured` if it cannot be read, `algorithm` if its key is not RSA or EC or is too short.
void requireSigned(const Signer& signer, const std::function<bool(EVP_PKEY*)>& isSignedWith);

/// Refused with `notConfigured` when it cannot be read; nobody is asked for a password.
Key privateKeyOf(const std::string& pem);

}  // namespace kestrelink::signin
