// libxmlsec1: its start, and owners of its handles.
#pragma once

#include <openssl/evp.h>
#include <xmlsec/keys.h>
#include <xmlsec/xmldsig.h>

#include <memory>

namespace kestrelink::signin {

/// Starts libxmlsec1 with OpenSSL, once for the process and for good, unless the host has started
/// it. Its error output on standard error is off from then on; a callback of the host's stays.
void startXmlsec();

struct ReleaseXmlsec {
  void operator()(xmlSecKey* key) const { xmlSecKeyDestroy(key); }
  void operator()(xmlSecDSigCtx* context) const { xmlSecDSigCtxDestroy(context); }
};
using XmlsecKey = std::unique_ptr<xmlSecKey, ReleaseXmlsec>;
using SignatureContext = std::unique_ptr<xmlSecDSigCtx, ReleaseXmlsec>;

/// A context for that key and no other: it never looks for one.
SignatureContext contextWith(EVP_PKEY* key);

}  // namespace kestrelink::signin
