#include "kestrelink/signin/XmlSecurity.h"

#include <xmlsec/crypto.h>
#include <xmlsec/errors.h>
#include <xmlsec/openssl/evp.h>
#include <xmlsec/xmlsec.h>

#include <new>

#include <libxml/parser.h>

#include "kestrelink/signin/Refusal.h"

namespace kestrelink::signin {
namespace {

// Starting it again would forget what the host has registered.
bool start() {
  xmlInitParser();
  xmlSecErrorsDefaultCallbackEnableOutput(0);
  const bool isStarted = xmlSecPtrListIsValid(xmlSecTransformIdsGet());
  if (!isStarted && xmlSecInit() != 0) return false;
  const bool hasOpenSsl =
      xmlSecTransformIdListFind(xmlSecTransformIdsGet(), xmlSecTransformRsaSha256Id) == 1;
  return hasOpenSsl || (xmlSecCryptoAppInit(nullptr) == 0 && xmlSecCryptoInit() == 0);
}

}  // namespace

void startXmlsec() {
  static const bool started = start();
  require(started, Reason::notConfigured, "libxmlsec1 does not start");
}

SignatureContext contextWith(EVP_PKEY* key) {
  SignatureContext context(xmlSecDSigCtxCreate(nullptr));
  XmlsecKey owner(xmlSecKeyCreate());
  if (!context || !owner) throw std::bad_alloc();
  EVP_PKEY_up_ref(key);
  xmlSecKeyData* const value = xmlSecOpenSSLEvpKeyAdopt(key);
  if (value == nullptr) EVP_PKEY_free(key);
  if (value == nullptr || xmlSecKeySetValue(owner.get(), value) != 0) throw std::bad_alloc();
  context->signKey = owner.release();
  return context;
}

}  // namespace kestrelink::signin
