#include "kestrelink/signin/Certificates.h"

#include <openssl/pem.h>
#include <openssl/x509.h>

#include <memory>
#include <new>

#include "kestrelink/signin/Encoding.h"

namespace kestrelink::signin {
namespace {

struct ReleaseOpenSsl {
  void operator()(X509* certificate) const { X509_free(certificate); }
  void operator()(BIO* bytes) const { BIO_free(bytes); }
};
using Certificate = std::unique_ptr<X509, ReleaseOpenSsl>;
using Bytes = std::unique_ptr<BIO, ReleaseOpenSsl>;

std::string contentOf(const Bytes& bytes) {
  char* content = nullptr;
  const long length = BIO_get_mem_data(bytes.get(), &content);
  return {content, static_cast<std::size_t>(length)};
}

Bytes emptyBytes() {
  Bytes bytes(BIO_new(BIO_s_mem()));
  if (!bytes) throw std::bad_alloc();
  return bytes;
}

}  // namespace

std::optional<std::string> pemOf(std::string_view base64) {
  const auto der = fromBase64(base64);
  if (!der) return std::nullopt;
  const auto* at = reinterpret_cast<const unsigned char*>(der->data());
  const unsigned char* const end = at + der->size();
  const Certificate certificate(d2i_X509(nullptr, &at, static_cast<long>(der->size())));
  if (!certificate || at != end) return std::nullopt;
  const Bytes pem = emptyBytes();
  if (PEM_write_bio_X509(pem.get(), certificate.get()) != 1) throw std::bad_alloc();
  return contentOf(pem);
}

std::optional<std::string> base64OfCertificate(const std::string& pem) {
  const Bytes text(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
  if (!text) throw std::bad_alloc();
  const Certificate certificate(
      PEM_read_bio_X509(text.get(), nullptr, nullptr, const_cast<char*>("")));
  if (!certificate) return std::nullopt;
  const Bytes der = emptyBytes();
  if (i2d_X509_bio(der.get(), certificate.get()) != 1) throw std::bad_alloc();
  return toBase64(contentOf(der));
}

}  // namespace kestrelink::signin
