#include "kestrelink/signin/Keys.h"

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include "kestrelink/signin/Refusal.h"

namespace kestrelink::signin {
namespace {

struct Release {
  void operator()(BIO* bio) const { BIO_free(bio); }
  void operator()(X509* certificate) const { X509_free(certificate); }
};

std::unique_ptr<BIO, Release> reading(const std::string& text) {
  std::unique_ptr<BIO, Release> bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
  if (!bio) throw std::bad_alloc();
  return bio;
}

// OpenSSL's own would ask on the terminal.
int noPassword(char* /*buffer*/, int /*size*/, int /*writing*/, void* /*context*/) noexcept {
  return -1;
}

// Discrete logarithms on shorter curves than P-256 are as near as factors of shorter RSA keys.
void requireLongEnough(EVP_PKEY* key, int leastRsaBits) {
  constexpr int kLeastEcBits = 256;
  const bool isRsa = EVP_PKEY_is_a(key, "RSA") == 1;
  require(isRsa || EVP_PKEY_is_a(key, "EC") == 1, Reason::algorithm,
          "the key of the provider's certificate is neither an RSA nor an EC key");
  const int bits = EVP_PKEY_get_bits(key);
  const int least = isRsa ? leastRsaBits : kLeastEcBits;
  if (bits >= least) return;
  refuse(Reason::algorithm, "the key of the provider's certificate has " + std::to_string(bits) +
                                " bits, fewer than " + std::to_string(least) +
                                (isRsa ? " (Policy::leastRsaBits)" : ""));
}

Key publicKeyOf(const std::string& certificatePem, int leastRsaBits) {
  const auto bio = reading(certificatePem);
  const std::unique_ptr<X509, Release> certificate(
      PEM_read_bio_X509(bio.get(), nullptr, &noPassword, nullptr));
  Key key(certificate ? X509_get_pubkey(certificate.get()) : nullptr);
  require(key != nullptr, Reason::notConfigured, "a certificate of the provider cannot be read");
  requireLongEnough(key.get(), leastRsaBits);
  return key;
}

}  // namespace

void requireSigned(const Signer& signer, const std::function<bool(EVP_PKEY*)>& isSignedWith) {
  Refusal why(Reason::badSignature, "the signature is not the provider's, or the text was changed");
  require(!signer.certificates.empty(), Reason::notConfigured,
          "there is no certificate of the provider");
  for (const std::string& certificate : signer.certificates) {
    try {
      if (isSignedWith(publicKeyOf(certificate, signer.leastRsaBits).get())) return;
    } catch (const Refusal& unusable) {
      why = unusable;
    }
  }
  throw Refusal(why);
}

Key privateKeyOf(const std::string& pem) {
  const auto bio = reading(pem);
  Key key(PEM_read_bio_PrivateKey(bio.get(), nullptr, &noPassword, nullptr));
  require(key != nullptr, Reason::notConfigured, "a private key of the client cannot be read");
  return key;
}

}  // namespace kestrelink::signin
