// The algorithms that signatures may use.
#pragma once

#include <openssl/evp.h>
#include <xmlsec/crypto.h>
#include <xmlsec/transforms.h>

#include <span>
#include <string>

namespace kestrelink::signin {

struct Algorithm {
  const char* uri;
  xmlSecTransformId (*transform)();
  bool isSha1 = false;
  // Of signatures only.
  const EVP_MD* (*digest)() = nullptr;
  const char* key = nullptr;
};
using Algorithms = std::span<const Algorithm>;

Algorithms signatureMethods();
Algorithms digestMethods();
Algorithms canonicalForms();

/// The one of that URI. Refused with `sha1` or `algorithm`, and the URI; `what` names its use.
const Algorithm& accepted(Algorithms list, const std::string& uri, bool acceptSha1,
                          const char* what);

/// The one that this key signs with: RSA-SHA256, or ECDSA-SHA256 on P-256.
const Algorithm& methodOf(const EVP_PKEY* key);

}  // namespace kestrelink::signin
