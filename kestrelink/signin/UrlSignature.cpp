#include <openssl/ec.h>
#include <openssl/evp.h>

#include <memory>
#include <new>

#include "kestrelink/signin/Algorithms.h"
#include "kestrelink/signin/Keys.h"
#include "kestrelink/signin/Refusal.h"
#include "kestrelink/signin/Signature.h"

namespace kestrelink::signin {
namespace {

struct Release {
  void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
  void operator()(ECDSA_SIG* signature) const { ECDSA_SIG_free(signature); }
};
template <class Handle>
using Openssl = std::unique_ptr<Handle, Release>;

Openssl<EVP_MD_CTX> newContext() {
  Openssl<EVP_MD_CTX> context(EVP_MD_CTX_new());
  if (!context) throw std::bad_alloc();
  return context;
}

const unsigned char* bytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}
unsigned char* bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

// XML Signature (section 6.4.3) has the two numbers of an ECDSA signature one behind the other in
// so many bytes each; OpenSSL has them in DER.
std::size_t numberSize(const EVP_PKEY* key) {
  return (static_cast<std::size_t>(EVP_PKEY_get_bits(key)) + 7) / 8;
}

std::string derOf(const std::string& raw) {
  const Openssl<ECDSA_SIG> signature(ECDSA_SIG_new());
  const int size = static_cast<int>(raw.size() / 2);
  BIGNUM* const r = BN_bin2bn(bytes(raw), size, nullptr);
  BIGNUM* const s = BN_bin2bn(bytes(raw) + size, size, nullptr);
  if (!signature || ECDSA_SIG_set0(signature.get(), r, s) != 1) throw std::bad_alloc();
  std::string der(static_cast<std::size_t>(i2d_ECDSA_SIG(signature.get(), nullptr)), '\0');
  unsigned char* end = bytes(der);
  i2d_ECDSA_SIG(signature.get(), &end);
  return der;
}

std::string rawOf(const std::string& der, std::size_t size) {
  const unsigned char* begin = bytes(std::string_view(der));
  const Openssl<ECDSA_SIG> signature(d2i_ECDSA_SIG(nullptr, &begin, static_cast<long>(der.size())));
  if (!signature) throw std::bad_alloc();
  std::string raw(2 * size, '\0');
  BN_bn2binpad(ECDSA_SIG_get0_r(signature.get()), bytes(raw), static_cast<int>(size));
  BN_bn2binpad(ECDSA_SIG_get0_s(signature.get()), bytes(raw) + size, static_cast<int>(size));
  return raw;
}

// Some toolkits send DER in URLs too.
bool isSignedWith(EVP_PKEY* key, const UrlSignature& signature, const Algorithm& method) {
  if (EVP_PKEY_is_a(key, method.key) != 1) return false;
  const bool isRaw = EVP_PKEY_is_a(key, "EC") == 1 && signature.value.size() == 2 * numberSize(key);
  const std::string value = isRaw ? derOf(signature.value) : signature.value;
  const auto context = newContext();
  return EVP_DigestVerifyInit(context.get(), nullptr, method.digest(), nullptr, key) == 1 &&
         EVP_DigestVerify(context.get(), bytes(std::string_view(value)), value.size(),
                          bytes(std::string_view(signature.octets)), signature.octets.size()) == 1;
}

}  // namespace

void verify(const UrlSignature& signature, const Signer& signer) {
  const Algorithm& method =
      accepted(signatureMethods(), signature.algorithm, signer.acceptSha1, "signature algorithm");
  requireSigned(signer, [&](EVP_PKEY* key) { return isSignedWith(key, signature, method); });
}

std::string signatureAlgorithmOf(const std::string& keyPem) {
  return methodOf(privateKeyOf(keyPem).get()).uri;
}

std::string signatureOver(std::string_view octets, const std::string& keyPem) {
  const Key key = privateKeyOf(keyPem);
  const Algorithm& method = methodOf(key.get());
  const auto context = newContext();
  std::string value(static_cast<std::size_t>(EVP_PKEY_get_size(key.get())), '\0');
  std::size_t size = value.size();
  require(EVP_DigestSignInit(context.get(), nullptr, method.digest(), nullptr, key.get()) == 1 &&
              EVP_DigestSign(context.get(), bytes(value), &size, bytes(octets), octets.size()) == 1,
          Reason::notConfigured, "the client's signing key does not sign");
  value.resize(size);
  return EVP_PKEY_is_a(key.get(), "EC") == 1 ? rawOf(value, numberSize(key.get())) : value;
}

}  // namespace kestrelink::signin
