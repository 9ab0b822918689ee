// `SignIn::finish` beside what it cannot do without: xmlsec's verification of the same response,
// and the first library's read of it. Prints both in milliseconds and megabytes, and their ratio;
// the times are medians of interleaved batches, the memory that of a process of its own for each.

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xmlsec/crypto.h>
#include <xmlsec/xmldsig.h>
#include <xmlsec/xmltree.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <libxml/parser.h>

#include "kestrelink/saml/KestrelinkSAML.h"
#include "kestrelink/signin/Pending.h"
#include "kestrelink/signin/SignIn.h"
#include "kestrelink/signin/Signature.h"

namespace {

namespace signin = kestrelink::signin;

constexpr const char* kProvider = "https://idp.lakeside-cable.example/saml";
constexpr const char* kClient = "https://signin.harbour-tv.example";
constexpr const char* kRequest = "_9F1B6F0E-3A55-4F0C-9A4B-6E0E5B1C7D21";

void require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "%s\n", what);
  std::exit(1);
}

std::string contentOf(BIO* bio) {
  char* data = nullptr;
  const long size = BIO_get_mem_data(bio, &data);
  return {data, static_cast<std::size_t>(size)};
}

// A key and its certificate, and the sample signed with it.
struct Sample {
  std::string certificate, text;
};

Sample sampleIn(const char* file) {
  std::ifstream stream(file);
  const std::string unsignedText{std::istreambuf_iterator<char>(stream), {}};
  const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(EVP_RSA_gen(2048), &EVP_PKEY_free);
  const std::unique_ptr<X509, decltype(&X509_free)> x509(X509_new(), &X509_free);
  X509_gmtime_adj(X509_getm_notBefore(x509.get()), 0);
  X509_gmtime_adj(X509_getm_notAfter(x509.get()), 3600);
  X509_set_pubkey(x509.get(), key.get());
  X509_sign(x509.get(), key.get(), EVP_sha256());
  const std::unique_ptr<BIO, decltype(&BIO_free)> pem(BIO_new(BIO_s_mem()), &BIO_free),
      keyPem(BIO_new(BIO_s_mem()), &BIO_free);
  PEM_write_bio_X509(pem.get(), x509.get());
  PEM_write_bio_PrivateKey(keyPem.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
  return {contentOf(pem.get()), signin::withSignature(unsignedText, contentOf(keyPem.get()), "")};
}

class Forgetful : public signin::Memory {
 public:
  Answer remember(std::string_view, kestrelink::SAMLDate, kestrelink::SAMLDate) override {
    return Answer::remembered;
  }
};

void finish(const Sample& sample) {
  const signin::SignIn signIn(
      {.entityId = kClient, .assertionConsumer = kClient + std::string("/acs")},
      {.entityId = kProvider, .signingCertificates = {sample.certificate}}, {},
      std::make_shared<Forgetful>());
  const signin::Pending pending{signin::Pending::Kind::signIn,   kRequest, kProvider, kClient, {},
                                std::chrono::system_clock::now()};
  const auto result = signIn.finish(sample.text, pending.text());
  require(result.verdict == signin::Verdict::signedIn, result.explanation.c_str());
}

void verifyAndRead(const Sample& sample) {
  xmlDoc* const document = xmlReadMemory(sample.text.data(), static_cast<int>(sample.text.size()),
                                         "", nullptr, XML_PARSE_NONET);
  xmlNode* const root = xmlDocGetRootElement(document);
  xmlAttr* const id = xmlHasProp(root, reinterpret_cast<const xmlChar*>("ID"));
  xmlAddID(nullptr, document, id->children->content, id);
  xmlSecDSigCtx* const context = xmlSecDSigCtxCreate(nullptr);
  context->signKey =
      xmlSecCryptoAppKeyLoadMemory(reinterpret_cast<const xmlSecByte*>(sample.certificate.data()),
                                   static_cast<xmlSecSize>(sample.certificate.size()),
                                   xmlSecKeyDataFormatCertPem, nullptr, nullptr, nullptr);
  xmlNode* const signature = xmlSecFindNode(root, xmlSecNodeSignature, xmlSecDSigNs);
  require(
      xmlSecDSigCtxVerify(context, signature) == 0 && context->status == xmlSecDSigStatusSucceeded,
      "xmlsec does not verify the sample");
  xmlSecDSigCtxDestroy(context);
  xmlFreeDoc(document);
  require(kestrelink::SAMLParserController::sharedInstance().parseResponse(sample.text) != nullptr,
          "the sample is rejected");
}

using Work = void (*)(const Sample&);

double millisecondsOf(Work work, const Sample& sample) {
  constexpr int kTimes = 20;
  const auto start = std::chrono::steady_clock::now();
  for (int time = 0; time < kTimes; ++time) work(sample);
  const std::chrono::duration<double, std::milli> spent = std::chrono::steady_clock::now() - start;
  return spent.count() / kTimes;
}

double megabytesOf(Work work, const Sample& sample) {
  const pid_t child = ::fork();
  if (child == 0) {
    work(sample);
    ::_exit(0);
  }
  int status = 0;
  rusage usage{};
  ::wait4(child, &status, 0, &usage);
  require(status == 0, "a process of the bench failed");
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

double medianOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

int main(int count, char** words) {
  require(count == 2, "usage: finish-bench RESPONSE");
  const Sample sample = sampleIn(words[1]);
  const double ours = megabytesOf(&finish, sample), alone = megabytesOf(&verifyAndRead, sample);
  finish(sample);  // starts xmlsec
  std::vector<double> finishing, reading;
  for (int batch = 0; batch < 15; ++batch) {
    finishing.push_back(millisecondsOf(&finish, sample));
    reading.push_back(millisecondsOf(&verifyAndRead, sample));
  }
  const double with = medianOf(finishing), without = medianOf(reading);
  std::printf("finish %.2f ms, verify and read %.2f ms: %.2f\n", with, without, with / without);
  std::printf("finish %.1f MB, verify and read %.1f MB: %.2f\n", ours, alone, ours / alone);
}
