#include <openssl/pem.h>
#include <openssl/x509.h>

#include <functional>
#include <memory>
#include <string>

#include "kestrelink/signin/Pending.h"
#include "kestrelink/signin/Refusal.h"
#include "kestrelink/signin/SignIn.h"
#include "kestrelink/signin/Signature.h"
#include "kestrelink/signin/XmlTree.h"

#include "tests/fuzz/Targets.h"

namespace fuzz {
namespace {

using namespace kestrelink::signin;

std::string pemOf(const std::function<int(BIO*)>& write) {
  const std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new(BIO_s_mem()), &BIO_free);
  write(bio.get());
  char* data = nullptr;
  const long size = BIO_get_mem_data(bio.get(), &data);
  return {data, static_cast<std::size_t>(size)};
}

struct KeyPair {
  std::string key, certificate;

  KeyPair() {
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> pair(EVP_EC_gen("P-256"),
                                                                   &EVP_PKEY_free);
    const std::unique_ptr<X509, decltype(&X509_free)> x509(X509_new(), &X509_free);
    X509_gmtime_adj(X509_getm_notBefore(x509.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(x509.get()), 3600);
    X509_set_pubkey(x509.get(), pair.get());
    X509_sign(x509.get(), pair.get(), EVP_sha256());
    certificate = pemOf([&](BIO* bio) { return PEM_write_bio_X509(bio, x509.get()); });
    key = pemOf([&](BIO* bio) {
      return PEM_write_bio_PrivateKey(bio, pair.get(), nullptr, nullptr, 0, nullptr, nullptr);
    });
  }
};

const KeyPair& pair() {
  static const KeyPair made;
  return made;
}

// A client that the messages of the seeds are for.
Result finish(std::string_view received) {
  static const kestrelink::SAMLDate now(std::chrono::sys_days(std::chrono::January / 15 / 2026) +
                                        std::chrono::hours(20));
  Policy policy;
  policy.clock = [] { return now.seconds(); };
  policy.sessionWithoutEnd = std::chrono::hours(1);
  const SignIn signIn(
      {.entityId = "https://tv.example", .assertionConsumer = "https://tv.example/in"},
      {.entityId = "https://idp.example", .signingCertificates = {pair().certificate}}, policy);
  const Pending pending{Pending::Kind::signIn, "_q", "https://idp.example",
                        "https://tv.example",  {},   now};
  return signIn.finish(received, pending.text());
}

std::string sessionIn(const Result& result) {
  return result.session ? result.session->text : std::string();
}

// At a place and in a way that depend on the text.
std::string damaged(std::string text) {
  const std::size_t number = std::hash<std::string>()(text);
  text[number % text.size()] ^= static_cast<char>(1 << (number / text.size() % 7));
  return text;
}

}  // namespace

void signIn(std::string_view input) {
  require(sessionIn(finish(input)).empty(), "what nobody signed signs nobody in");
  std::string text;
  try {
    parsed(input, Policy().mostBytes);  // a provider signs nothing that exceeds the bounds
    text = withSignature(std::string(input), pair().key, {});
  } catch (const Refusal&) {
    return;
  }
  const std::string session = sessionIn(finish(text));
  const std::string other = sessionIn(finish(damaged(std::move(text))));
  require(other.empty() || other == session, "a change of the signed text signs nobody else in");
}

}  // namespace fuzz
