// Runs the rows of cases/trusted.txt: keys, certificates and messages are made here, and every
// attack starts from what the provider signed.

#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <xmlsec/xmltree.h>

#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "kestrelink/signin/Encoding.h"
#include "kestrelink/signin/Pending.h"
#include "kestrelink/signin/SignIn.h"
#include "kestrelink/signin/Signature.h"
#include "kestrelink/signin/XmlSecurity.h"
#include "kestrelink/signin/XmlTree.h"

namespace kestrelink::signin {
namespace {

std::string pemOf(const std::function<void(BIO*)>& write) {
  const std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new(BIO_s_mem()), &BIO_free);
  write(bio.get());
  char* data = nullptr;
  const long size = BIO_get_mem_data(bio.get(), &data);
  return {data, static_cast<std::size_t>(size)};
}

struct Pair {
  std::shared_ptr<EVP_PKEY> key;
  std::string certificate, privatePem;

  explicit Pair(EVP_PKEY* made) : key(made, &EVP_PKEY_free) {
    const std::unique_ptr<X509, decltype(&X509_free)> x509(X509_new(), &X509_free);
    X509_gmtime_adj(X509_getm_notBefore(x509.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(x509.get()), 3600);
    X509_set_pubkey(x509.get(), made);
    X509_sign(x509.get(), made, EVP_sha256());
    certificate = pemOf([&x509](BIO* bio) { PEM_write_bio_X509(bio, x509.get()); });
    privatePem = pemOf([made](BIO* bio) {
      PEM_write_bio_PrivateKey(bio, made, nullptr, nullptr, 0, nullptr, nullptr);
    });
  }
};

const std::map<std::string, Pair>& pairs() {
  static const std::map<std::string, Pair> made = {
      {"key", Pair(EVP_RSA_gen(2048))},        {"attacker", Pair(EVP_RSA_gen(2048))},
      {"short", Pair(EVP_RSA_gen(1024))},      {"client", Pair(EVP_RSA_gen(2048))},
      {"P-256", Pair(EVP_EC_gen("P-256"))},    {"P-521", Pair(EVP_EC_gen("P-521"))},
      {"small", Pair(EVP_EC_gen("secp224r1"))}};
  return made;
}

using Pieces = std::map<std::string, std::string, std::less<>>;

std::string fileText(const std::string& name) {
  std::ifstream file(std::string(SOURCE_DIR "/tests/signin/") + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> split(std::string_view text, std::string_view separator) {
  std::vector<std::string> parts;
  for (std::size_t at; (at = text.find(separator)) != std::string_view::npos;) {
    parts.emplace_back(text.substr(0, at));
    text.remove_prefix(at + separator.size());
  }
  parts.emplace_back(text);
  return parts;
}

// From the first `begin` to the end of the first `end` behind it.
std::string cut(const std::string& text, std::string_view begin, std::string_view end) {
  const std::size_t from = text.find(begin);
  return text.substr(from, text.find(end, from) + end.size() - from);
}

// The names in braces replaced by what they stand for.
std::string filled(std::string text, const Pieces& pieces) {
  for (const auto& [name, piece] : pieces) {
    const std::string braced = "{" + name + "}";
    for (std::size_t at = 0; (at = text.find(braced, at)) != std::string::npos;) {
      text.replace(at, braced.size(), piece);
      at += piece.size();
    }
  }
  return text;
}

unsigned char* bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

const std::string& contentKey() {
  static const std::string kKey(32, 'k');
  return kKey;
}

// "aes256-gcm TEXT": the cipher text of it.
std::string encrypted(const std::string& name, std::string text) {
  std::string openssl = "AES-" + name.substr(3);
  const std::unique_ptr<EVP_CIPHER, decltype(&EVP_CIPHER_free)> cipher(
      EVP_CIPHER_fetch(nullptr, openssl.c_str(), nullptr), &EVP_CIPHER_free);
  const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(
      EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free);
  std::string key = contentKey();
  std::string made(static_cast<std::size_t>(EVP_CIPHER_get_iv_length(cipher.get())), 'i');
  EVP_EncryptInit_ex2(context.get(), cipher.get(), bytes(key), bytes(made), nullptr);
  std::string body(text.size() + 16, '\0'), tag(16, '\0');
  int size = 0, rest = 0;
  EVP_EncryptUpdate(context.get(), bytes(body), &size, bytes(text), static_cast<int>(text.size()));
  EVP_EncryptFinal_ex(context.get(), bytes(body) + size, &rest);
  body.resize(static_cast<std::size_t>(size + rest));
  if (!name.ends_with("gcm")) return made + body;
  EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_GET_TAG, 16, tag.data());
  return made + body + tag;
}

// "oaep BYTES DIGEST MASK LABEL": a content key of so many bytes, encrypted for the client.
std::string encryptedKey(const std::vector<std::string>& words) {
  EVP_PKEY* const key = pairs().at("client").key.get();
  const std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> context(
      EVP_PKEY_CTX_new(key, nullptr), &EVP_PKEY_CTX_free);
  EVP_PKEY_encrypt_init(context.get());
  EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING);
  EVP_PKEY_CTX_set_rsa_oaep_md_name(context.get(), words[2].c_str(), nullptr);
  EVP_PKEY_CTX_set_rsa_mgf1_md_name(context.get(), words[3].c_str(), nullptr);
  if (words.size() > 4) {
    EVP_PKEY_CTX_set0_rsa_oaep_label(context.get(), OPENSSL_strdup(words[4].c_str()),
                                     static_cast<int>(words[4].size()));
  }
  std::string plain = contentKey(), made(static_cast<std::size_t>(EVP_PKEY_get_size(key)), '\0');
  std::size_t size = made.size();
  EVP_PKEY_encrypt(context.get(), bytes(made), &size, bytes(plain),
                   static_cast<std::size_t>(std::stoi(words[1])));
  return made;
}

// Replaces what is in "[[" and "]]", the innermost first.
std::string withCipherTexts(std::string text) {
  for (std::size_t from; (from = text.rfind("[[")) != std::string::npos;) {
    const std::size_t until = text.find("]]", from);
    const std::string inner = text.substr(from + 2, until - from - 2);
    const std::string name = inner.substr(0, inner.find(' '));
    text.replace(from, until + 2 - from,
                 toBase64(name == "oaep" ? encryptedKey(split(inner, " "))
                                         : encrypted(name, inner.substr(name.size() + 1))));
  }
  return text;
}

// Each "what => with what", separated by " ; ", at the first place.
std::string changed(std::string text, const std::string& changes, const Pieces& pieces) {
  for (const std::string& change : split(changes, " ; ")) {
    if (change == "-") continue;
    const std::size_t arrow = change.find(" =>");
    const std::string what = filled(change.substr(0, arrow), pieces);
    const std::size_t at = text.find(what);
    EXPECT_NE(at, std::string::npos) << change;
    if (at == std::string::npos) continue;
    text.replace(at, what.size(),
                 filled(change.substr(std::min(arrow + 4, change.size())), pieces));
  }
  return text;
}

// Fills in the first signature of the text, whatever it refers to.
std::string sign(const std::string& text, const Pair& pair) {
  const Owned<xmlDoc> document = reparsed(text);
  xmlNode* const root = xmlDocGetRootElement(document.get());
  const xmlChar* identifiers[] = {BAD_CAST "ID", nullptr};
  xmlSecAddIDs(document.get(), root, identifiers);
  const SignatureContext context = contextWith(pair.key.get());
  xmlNode* const signature = xmlSecFindNode(root, xmlSecNodeSignature, xmlSecDSigNs);
  EXPECT_EQ(xmlSecDSigCtxSign(context.get(), signature), 0) << text;
  const std::string dumped = written(document.get());
  return dumped.substr(dumped.find("?>\n") + 3);
}

std::string signedIfBlank(const std::string& text, const Pair& pair) {
  const bool isWhole = text.find("<samlp:") < 200;
  const bool isBlank = isWhole && text.find("<ds:SignatureValue/>") != std::string::npos;
  return isBlank ? sign(text, pair) : text;
}

// What stands for itself.
Pieces firstPieces() {
  Pieces pieces = {{"unsigned", fileText("messages/response.xml")},
                   {"signature", fileText("messages/signature.xml")},
                   {"thousand", std::string(1001, 'x')},
                   {"quarter megabyte", std::string(256 * 1024, '\n')}};
  for (int each = 0; each < 100; ++each) {
    pieces["many"] += " xmlns:n" + std::to_string(each) + "='urn:n'";
  }
  return pieces;
}

// Cut out of another piece, or made of it.
std::string derived(const std::string& source, const std::string& changes, const Pieces& pieces) {
  const auto ends = split(changes, " ... ");
  return ends.size() == 2 ? cut(source, ends[0], ends[1]) : changed(source, changes, pieces);
}

// A query string that this pair signed.
std::string inUrl(const std::string& xml, const Pair& pair) {
  const std::string octets = "SAMLResponse=" + toUrlText(toBase64(deflated(xml))) +
                             "&SigAlg=" + toUrlText(signatureAlgorithmOf(pair.privatePem));
  return octets + "&Signature=" + toUrlText(toBase64(signatureOver(octets, pair.privatePem)));
}

struct Settings {
  Client client{.entityId = "https://tv.example", .assertionConsumer = "https://tv.example/in"};
  Provider provider{.entityId = "https://idp.example"};
  Policy policy;
  std::string request = "_q", url;

  // "NAME=VALUE", separated by blanks.
  explicit Settings(const std::string& text) {
    policy.clock = [] {
      return SAMLDate(std::chrono::sys_days(std::chrono::February / 1 / 2026)).seconds();
    };
    std::map<std::string, std::string> values = {{"signers", "key"}, {"keys", "client"}};
    for (const std::string& word : split(text, " ")) {
      values[word.substr(0, word.find('='))] = word.substr(word.find('=') + 1);
    }
    for (const std::string& name : split(values["signers"], ",")) {
      const auto pair = pairs().find(name);
      provider.signingCertificates.push_back(pair == pairs().end() ? name
                                                                   : pair->second.certificate);
    }
    if (values["signers"].empty()) provider.signingCertificates.clear();
    for (const std::string& name : split(values["keys"], ",")) {
      if (!name.empty()) client.decryptionKeys.push_back(pairs().at(name).privatePem);
    }
    policy.acceptSha1 = values.count("sha1") != 0;
    if (values.count("bits") != 0) policy.leastRsaBits = std::stoi(values["bits"]);
    if (values.count("audience") != 0) client.entityId = values["audience"];
    if (values.count("issuer") != 0) provider.entityId = values["issuer"];
    if (values.count("recipient") != 0) client.assertionConsumer = values["recipient"];
    if (values.count("request") != 0) request = values["request"];
    url = values["url"];
  }
};

const char* nameOf(Reason reason) {
  constexpr const char* kNames[] = {"none",
                                    "tooLong",
                                    "notDecodable",
                                    "notXml",
                                    "documentType",
                                    "wrongMessage",
                                    "notValid",
                                    "schemaMissing",
                                    "duplicateId",
                                    "notSigned",
                                    "signatureForm",
                                    "algorithm",
                                    "sha1",
                                    "badSignature",
                                    "notDecrypted",
                                    "malformedDate",
                                    "issuer",
                                    "destination",
                                    "audience",
                                    "recipient",
                                    "request",
                                    "version",
                                    "confirmation",
                                    "condition",
                                    "timeWindow",
                                    "noSessionEnd",
                                    "sessionOver",
                                    "noAssertion",
                                    "noAuthentication",
                                    "noSubscriber",
                                    "otherSubscriber",
                                    "seenBefore",
                                    "tooMany",
                                    "providerExpired",
                                    "notConfigured"};
  static_assert(std::size(kNames) == static_cast<std::size_t>(Reason::notConfigured) + 1);
  return kNames[static_cast<std::size_t>(reason)];
}

std::string outcome(const std::string& text, const Settings& settings) {
  const SignIn signIn(settings.client, settings.provider, settings.policy);
  const bool isLogout = text.find("LogoutResponse") < 300;
  const Pending pending{isLogout ? Pending::Kind::logout : Pending::Kind::signIn,
                        settings.request,
                        settings.provider.entityId,
                        settings.client.entityId,
                        {},
                        settings.policy.clock()};
  const std::string received = settings.url.empty() ? text : inUrl(text, pairs().at(settings.url));
  const Result result = isLogout ? signIn.finishLogout(received, pending.text())
                                 : signIn.finish(received, pending.text());
  if (result.verdict == Verdict::signedIn) {
    EXPECT_EQ(result.session->text.find(":Encrypted"), std::string::npos);
    return result.session->subscriber;
  }
  // What libxml2 says of the schema differs between its versions.
  const std::string words = result.explanation.substr(0, result.explanation.find(": \"ERROR"));
  if (result.verdict != Verdict::refused) return words;
  return std::string(nameOf(result.reason)) + ": " + words;
}

struct Case {
  std::string line, text;
  Settings settings;
  std::string outcome;
};

std::vector<Case> cases() {
  startXmlsec();
  std::vector<Case> made;
  Pieces pieces = firstPieces();
  for (const std::string& line : split(fileText("cases/trusted.txt"), "\n")) {
    if (line.empty() || line.starts_with('#')) continue;
    const auto row = split(line, " | ");
    if (row.size() == 3) {
      pieces[row[0]] = derived(pieces.at(row[1]), row[2], pieces);
      pieces["signed " + row[0]] =
          signedIfBlank(withCipherTexts(pieces[row[0]]), pairs().at("key"));
      continue;
    }
    if (row.size() != 6) throw std::invalid_argument(line);
    const auto base = split(row[1] + " key", " ");
    std::string text = pieces.at(base[0]);
    for (const std::string& changes : {row[2], row[3]}) {
      text = withCipherTexts(changed(text, changes, pieces));
      text = signedIfBlank(text, pairs().at(base[1]));
    }
    made.push_back({line, text, Settings(row[4]), filled(row[5], pieces)});
  }
  return made;
}

TEST(Trusted, CasesFromSeveralThreads) {
  const std::vector<Case> all = cases();
  testing::internal::CaptureStderr();
  std::vector<std::thread> threads;
  for (int each = 0; each < 4; ++each) {
    threads.emplace_back([&all] {
      for (const Case& row : all)
        EXPECT_EQ(outcome(row.text, row.settings), row.outcome) << row.line;
    });
  }
  for (std::thread& each : threads) each.join();
  // The first library logs numbers, and nothing of a message.
  for (const auto& written : split(testing::internal::GetCapturedStderr(), "\n")) {
    EXPECT_TRUE(written.empty() || written.starts_with("kestrelink-saml: ")) << written;
  }
}

// As toolkits send it that use what OpenSSL makes.
TEST(UrlSignature, EcdsaInDer) {
  const Pair& pair = pairs().at("P-521");
  const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                        &EVP_MD_CTX_free);
  UrlSignature signature{"a=b", "http://www.w3.org/2001/04/xmldsig-more#ecdsa-sha512",
                         std::string(200, '\0')};
  std::string octets = signature.octets;
  std::size_t size = signature.value.size();
  EVP_DigestSignInit(context.get(), nullptr, EVP_sha512(), nullptr, pair.key.get());
  EVP_DigestSign(context.get(), bytes(signature.value), &size, bytes(octets), octets.size());
  signature.value.resize(size);
  const std::vector<std::string> certificates = {pair.certificate};
  EXPECT_NO_THROW(verify(signature, Signer{certificates}));
  signature.octets = "a=c";
  EXPECT_THROW(verify(signature, Signer{certificates}), Refusal);
}

}  // namespace
}  // namespace kestrelink::signin
