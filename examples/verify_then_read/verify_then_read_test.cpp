// Keys, certificates and messages are made here; every attack starts from what the provider signed.

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xmlsec/crypto.h>
#include <xmlsec/templates.h>
#include <xmlsec/xmldsig.h>
#include <xmlsec/xmltree.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include <gtest/gtest.h>
#include <libxml/parser.h>

#include "kestrelink/saml/KestrelinkSAML.h"

#include "VerifiedAnswer.h"

namespace verify_then_read {
namespace {

struct Release {
  void operator()(BIO* bio) const { BIO_free(bio); }
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(X509* certificate) const { X509_free(certificate); }
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
  void operator()(xmlChar* text) const { xmlFree(text); }
  void operator()(xmlSecDSigCtx* context) const { xmlSecDSigCtxDestroy(context); }
};
template <class Handle>
using Owned = std::unique_ptr<Handle, Release>;

template <class Write>
std::string written(Write write) {
  const Owned<BIO> bio(BIO_new(BIO_s_mem()));
  EXPECT_EQ(write(bio.get()), 1);
  char* data = nullptr;
  const long size = BIO_get_mem_data(bio.get(), &data);
  return {data, static_cast<std::size_t>(size)};
}

struct Signer {
  std::string key, certificate;

  explicit Signer(EVP_PKEY* made) {
    const Owned<EVP_PKEY> pair(made);
    const Owned<X509> x509(X509_new());
    X509_gmtime_adj(X509_getm_notBefore(x509.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(x509.get()), 3600);
    X509_set_pubkey(x509.get(), pair.get());
    X509_sign(x509.get(), pair.get(), EVP_sha256());
    certificate = written([&](BIO* bio) { return PEM_write_bio_X509(bio, x509.get()); });
    key = written([&](BIO* bio) {
      return PEM_write_bio_PrivateKey(bio, pair.get(), nullptr, nullptr, 0, nullptr, nullptr);
    });
  }
};

std::string replaced(std::string text, std::string_view what, std::string_view with) {
  const std::size_t at = text.find(what);
  EXPECT_NE(at, std::string::npos) << what;
  return at == std::string::npos ? text : text.replace(at, what.size(), with);
}

// From the first `begin` to the end of the first `end` behind it.
std::string cut(const std::string& text, std::string_view begin, std::string_view end) {
  const std::size_t from = text.find(begin);
  return text.substr(from, text.find(end, from) + end.size() - from);
}

std::string signatureOf(const std::string& text) {
  return cut(text, "<ds:Signature ", "</ds:Signature>");
}

const std::string kExclusive = "http://www.w3.org/2001/10/xml-exc-c14n#";
const std::string kSha256 = "http://www.w3.org/2001/04/xmlenc#sha256";
const std::string kRsaSha256 = "http://www.w3.org/2001/04/xmldsig-more#rsa-sha256";
const std::string kEnveloped =
    "<ds:Transform Algorithm='http://www.w3.org/2000/09/xmldsig#enveloped-signature'/>";
const std::string kCanonical = "<ds:Transform Algorithm='" + kExclusive + "'/>";

using Parts = std::initializer_list<std::pair<const char*, std::string>>;

std::string filled(std::string text, Parts parts) {
  for (const auto& [name, part] : parts) text = replaced(text, name, part);
  return text;
}

// A signature still to be made.
std::string blank(const std::string& uri) {
  return filled(R"(<ds:Signature xmlns:ds='http://www.w3.org/2000/09/xmldsig#'><ds:SignedInfo>
<ds:CanonicalizationMethod Algorithm='@c14n'/><ds:SignatureMethod Algorithm='@method'/>
<ds:Reference URI='@uri'><ds:Transforms>@transforms</ds:Transforms><ds:DigestMethod
Algorithm='@digest'/><ds:DigestValue/></ds:Reference></ds:SignedInfo><ds:SignatureValue/>
</ds:Signature>)",
                {{"@c14n", kExclusive},
                 {"@method", kRsaSha256},
                 {"@uri", uri},
                 {"@transforms", kEnveloped + kCanonical},
                 {"@digest", kSha256}});
}

// The prefix "xs" is one that canonical form does not see.
std::string assertion(const std::string& id, const std::string& user,
                      const std::string& signature = "", const std::string& advice = "") {
  return filled(R"(<saml:Assertion ID='@id' Version='2.0' IssueInstant='2026-01-15T20:15:02Z'>
<saml:Issuer>https://idp.example</saml:Issuer>@signature
<saml:Subject><saml:NameID>@user</saml:NameID></saml:Subject>
<saml:Conditions NotOnOrAfter='2096-01-15T20:20:02Z'><saml:AudienceRestriction>
<saml:Audience>https://tv.example</saml:Audience></saml:AudienceRestriction></saml:Conditions>
@advice<saml:AuthnStatement AuthnInstant='2026-01-15T20:15:01Z'
SessionNotOnOrAfter='2096-01-15T20:20:02Z'><saml:AuthnContext><saml:AuthnContextClassRef
>urn:oasis:names:tc:SAML:2.0:ac:classes:Password</saml:AuthnContextClassRef></saml:AuthnContext>
</saml:AuthnStatement><saml:AttributeStatement><saml:Attribute Name='Language'>
<saml:AttributeValue xsi:type='xs:string'>sv</saml:AttributeValue></saml:Attribute>
</saml:AttributeStatement></saml:Assertion>)",
                {{"@id", id}, {"@signature", signature}, {"@user", user}, {"@advice", advice}});
}

std::string response(const std::string& content, const std::string& signature = "",
                     const std::string& id = "_r", const std::string& extensions = "") {
  return filled(R"(<samlp:Response xmlns:samlp='urn:oasis:names:tc:SAML:2.0:protocol'
xmlns:saml='urn:oasis:names:tc:SAML:2.0:assertion' xmlns:xs='http://www.w3.org/2001/XMLSchema'
xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' ID='@id' Version='2.0'
IssueInstant='2026-01-15T20:15:02Z'><saml:Issuer>https://idp.example</saml:Issuer>@signature
<samlp:Extensions>@extensions</samlp:Extensions>
<samlp:Status><samlp:StatusCode Value='urn:oasis:names:tc:SAML:2.0:status:Success'/></samlp:Status>
@content</samlp:Response>)",
                {{"@id", id},
                 {"@signature", signature},
                 {"@extensions", extensions.empty() ? "<tv:x xmlns:tv='urn:tv'/>" : extensions},
                 {"@content", content}});
}

// Fills in the first signature of the text, whatever it refers to.
std::string sign(const std::string& text, const Signer& signer) {
  const Owned<xmlDoc> document(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), "", nullptr, 0));
  xmlNode* const root = xmlDocGetRootElement(document.get());
  const xmlChar* identifiers[] = {BAD_CAST "ID", nullptr};
  xmlSecAddIDs(document.get(), root, identifiers);
  const Owned<xmlSecDSigCtx> context(xmlSecDSigCtxCreate(nullptr));
  context->signKey =
      xmlSecCryptoAppKeyLoadMemory(reinterpret_cast<const xmlSecByte*>(signer.key.data()),
                                   static_cast<xmlSecSize>(signer.key.size()),
                                   xmlSecKeyDataFormatPem, nullptr, nullptr, nullptr);
  xmlSecCryptoAppKeyCertLoadMemory(
      context->signKey, reinterpret_cast<const xmlSecByte*>(signer.certificate.data()),
      static_cast<xmlSecSize>(signer.certificate.size()), xmlSecKeyDataFormatPem);
  xmlNode* const signature = xmlSecFindNode(root, xmlSecNodeSignature, xmlSecDSigNs);
  EXPECT_EQ(xmlSecDSigCtxSign(context.get(), signature), 0) << text;
  xmlChar* dumped = nullptr;
  int length = 0;
  xmlDocDumpMemory(document.get(), &dumped, &length);
  const Owned<xmlChar> owned(dumped);
  return cut(reinterpret_cast<const char*>(dumped), "<samlp:Response", "</samlp:Response>");
}

// "accepted: " and the name identifier that the library reads, or "refused: " and the reason.
std::string outcome(const std::string& text, const std::string& certificate) {
  std::string reason;
  const auto trusted = verifiedAnswer(text, certificate, reason);
  if (!trusted) return "refused: " + reason;
  const auto read = kestrelink::SAMLParserController::sharedInstance().parseResponse(*trusted);
  if (!read) return "not read: " + *trusted;
  EXPECT_EQ(read->assertions()->size(), 1u);
  EXPECT_EQ(read->selectedProvider(), "https://idp.example");
  EXPECT_EQ(read->expectedAction(), kestrelink::SAMLExpectedActionProceed);
  return "accepted: " +
         read->subject()->firstElementByTagName("NameID")->textContent().value_or("");
}

TEST(VerifiedAnswer, KeepsWhatWasSignedAndRefusesTheRest) {
  std::string reason;
  EXPECT_FALSE(verifiedAnswer("", "", reason));  // starts xmlsec, which `sign` needs
  ASSERT_TRUE(kestrelink::SAMLParserController::sharedInstance().schema());
  const Signer provider(EVP_RSA_gen(2048)), elliptic(EVP_EC_gen("P-256")),
      attacker(EVP_RSA_gen(2048));

  const std::string plain = response(assertion("_a", "mara"), blank("#_r"));
  const std::string whole = sign(plain, provider);
  const std::string part = sign(response(assertion("_a", "mara", blank("#_a"))), provider);
  const std::string good = cut(part, "<saml:Assertion", "</saml:Assertion>"),
                    goodSignature = signatureOf(part);
  const std::string bare = replaced(good, goodSignature, "");
  const std::string evil = assertion("_e", "mallory");
  const auto altered = [&](std::string_view what, std::string_view with) {
    return sign(replaced(plain, what, with), provider);
  };
  const auto inAdvice = [](const std::string& hidden) {
    return "<saml:Advice>" + hidden + "</saml:Advice>";
  };
  const std::string xpath =
      "<ds:Transform Algorithm='http://www.w3.org/TR/1999/REC-xpath-19991116'>"
      "<ds:XPath>not(ancestor-or-self::saml:Subject)</ds:XPath></ds:Transform>";
  const std::string xslt =
      "<ds:Transform Algorithm='http://www.w3.org/TR/1999/REC-xslt-19991116'>"
      "<xsl:stylesheet xmlns:xsl='http://www.w3.org/1999/XSL/Transform' version='1.0'>"
      "<xsl:template match='/'><x/></xsl:template></xsl:stylesheet></ds:Transform>";
  const std::string keyInfo =
      "<ds:KeyInfo><ds:KeyValue/><ds:X509Data><ds:X509Certificate/></ds:X509Data></ds:KeyInfo>";
  const std::string reference = cut(plain, "<ds:Reference", "</ds:Reference>");
  const std::string more = "http://www.w3.org/2001/04/xmldsig-more#";
  const std::string old = "http://www.w3.org/2000/09/xmldsig#";
  const char* const kElsewhere = "refused: the signature refers to something else";
  const char* const kNotGood = "refused: the signature is not the certificate holder's";
  const char* const kTwice = "refused: an identifier is used twice";
  const char* const kSeveral = "refused: the response is unsigned and has several assertions";
  const char* const kNone = "refused: there is no signature";
  const char* const kObject = "refused: the signature has an Object";
  const char* const kMethod = "refused: the signature algorithm is not allowed";
  const char* const kTransforms = "refused: the transforms are not allowed";

  struct Row {
    const char* name;
    std::string text;
    std::string outcome;  // how it begins
    std::string certificate = {};
  };
  const Row rows[] = {
      {"signed response", whole, "accepted: mara"},
      {"signed assertion", part, "accepted: mara"},
      {"both", sign(replaced(part, "</saml:Issuer>", "</saml:Issuer>" + blank("#_r")), provider),
       "accepted: mara"},
      {"elliptic curve", sign(replaced(plain, kRsaSha256, more + "ecdsa-sha256"), elliptic),
       "accepted: mara", elliptic.certificate},
      // What was not signed is not read, and what was is read in its canonical form.
      {"unsigned issuer", replaced(part, "https://idp", "https://evil"), "accepted: mara"},
      {"unsigned status", replaced(part, "status:Success", "status:Requester"), "accepted: mara"},
      {"comment", replaced(part, "mara", "ma<!-- cut -->ra"), "accepted: mara"},
      {"comment, whole", replaced(whole, "mara", "ma<!-- cut -->ra"), "accepted: mara"},
      {"CDATA", replaced(part, "mara", "ma<![CDATA[ra]]>"), "accepted: mara"},

      {"moved below", response(assertion("_e", "mallory", "", inAdvice(good))), kNone},
      {"moved below, signature taken",
       response(assertion("_e", "mallory", goodSignature, inAdvice(bare))), kElsewhere},
      {"second assertion first", response(evil + good), kSeveral},
      {"second assertion last", response(good + evil), kSeveral},
      {"in Extensions", response(evil, "", "_r", good), kNone},
      {"in Extensions, signature taken",
       response(assertion("_e", "mallory", goodSignature), "", "_r", bare), kElsewhere},
      {"in Object",
       response(assertion("_e", "mallory",
                          replaced(goodSignature, "</ds:Signature>",
                                   "<ds:Object>" + bare + "</ds:Object></ds:Signature>"))),
       kObject},
      {"signed with an Object", altered("</ds:Signature>", "<ds:Object/></ds:Signature>"), kObject},
      {"response in response", response(evil, "", "_e2", whole), kNone},
      {"response in response, signature taken",
       response(evil, signatureOf(whole), "_e2", replaced(whole, signatureOf(whole), "")),
       kElsewhere},
      {"same ID", response(assertion("_a", "mallory", goodSignature, inAdvice(bare))), kTwice},
      {"same ID, other spelling", replaced(part, "<samlp:Status>", "<samlp:Status Id='_a'>"),
       kTwice},
      {"signature on another element", response(assertion("_e", "mallory", goodSignature)),
       kElsewhere},
      {"tampered", replaced(part, "mara", "mallory"), kNotGood},
      {"tampered, whole", replaced(whole, "mara", "mallory"), kNotGood},
      {"wrong key", part, kNotGood, attacker.certificate},
      {"attacker's key and certificate inside",
       sign(replaced(plain, "</ds:Signature>", keyInfo + "</ds:Signature>"), attacker), kNotGood},
      {"other reference", altered("URI='#_r'", "URI='#_a'"), kElsewhere},
      {"empty reference", altered("URI='#_r'", "URI=''"), kElsewhere},
      {"XPointer", altered("URI='#_r'", "URI='#xpointer(/)'"), kElsewhere},
      {"XPointer that agrees",
       sign(response(assertion("_a", "mara"), blank("#xpointer(/)"), "xpointer(/)"), provider),
       "refused: the signed element's ID is no name"},
      // libxmlsec1 looks at local names only, and so sees the first of the two.
      {"another reference under a prefix",
       altered("URI='#_r'", "xmlns:x='urn:x' x:URI='' URI='#_r'"), kNotGood},
      {"another algorithm under a prefix",
       altered("Algorithm='" + kRsaSha256,
               "xmlns:x='urn:x' x:Algorithm='" + old + "rsa-sha1' Algorithm='" + kRsaSha256),
       kNotGood},
      {"two references", altered(reference, reference + reference),
       "refused: the signature has not one Reference"},
      {"XPath", altered(kCanonical, xpath + kCanonical), kTransforms},
      {"XSLT", altered(kCanonical, kCanonical + xslt), kTransforms},
      {"no canonical form", altered(kCanonical, ""), kTransforms},
      {"with comments", altered(kCanonical, replaced(kCanonical, "n#", "n#WithComments")),
       kTransforms},
      {"SHA-1 signature", altered(kRsaSha256, old + "rsa-sha1"), kMethod},
      {"shared secret", replaced(whole, kRsaSha256, more + "hmac-sha256"), kMethod},
      {"SHA-1 digest", altered(kSha256, old + "sha1"), "refused: the digest algorithm"},
      {"other canonical form",
       altered(kExclusive, "http://www.w3.org/TR/2001/REC-xml-c14n-20010315"),
       "refused: the canonicalization"},
      {"two signatures", altered("<samlp:Status>", blank("#_r") + "<samlp:Status>"),
       "refused: the response has several signatures"},
      {"two signatures, part", replaced(part, "<saml:Subject>", blank("#_a") + "<saml:Subject>"),
       "refused: the assertion has several signatures"},
      {"unsigned", response(evil), kNone},
      {"no assertion", response(""), kNone},
      {"logout",
       replaced(replaced(whole, "samlp:Response", "samlp:LogoutResponse"), "</samlp:Response",
                "</samlp:LogoutResponse"),
       "refused: the root is not a response"},
      {"entity", "<!DOCTYPE r [<!ENTITY m 'mara'>]>" + replaced(part, "mara", "&m;"),
       "refused: the answer has a document type"},
      {"not well-formed", part + "<", "refused: the answer is not well-formed"},
      {"no certificate", part, "refused: the certificate cannot be read", "none"},
  };
  for (const Row& row : rows) {
    const std::string& certificate =
        row.certificate.empty() ? provider.certificate : row.certificate;
    EXPECT_EQ(outcome(row.text, certificate).substr(0, row.outcome.size()), row.outcome)
        << row.name << "\n"
        << row.text;
  }
}

TEST(VerifyThenRead, Program) {
  namespace fs = std::filesystem;
  std::string reason;
  EXPECT_FALSE(verifiedAnswer("", "", reason));
  const Signer provider(EVP_RSA_gen(2048));
  const fs::path folder = fs::temp_directory_path() / ("verify." + std::to_string(getpid()));
  fs::create_directory(folder);
  const auto write = [&](const char* name, const std::string& text) {
    std::ofstream(folder / name) << text;
  };
  const auto signedResponse = [&](std::string_view what, std::string_view with) {
    return sign(replaced(response(assertion("_a", "mara"), blank("#_r")), what, with), provider);
  };
  write("key", provider.certificate);
  write("good", signedResponse("mara", "mara"));
  write("named", signedResponse("'Language'", "'username'"));
  write("two",
        signedResponse("</saml:Assertion>",
                       "</saml:Assertion>" + replaced(assertion("_b", "mallory"), "2096", "2026")));
  write("narrow",
        signedResponse("</saml:Conditions>",
                       "<saml:AudienceRestriction><saml:Audience>"
                       "x:y</saml:Audience></saml:AudienceRestriction></saml:Conditions>"));
  write("expired", signedResponse("2096", "2026"));
  write("denied", signedResponse("status:Success", "status:Responder"));
  write("empty", sign(response("", blank("#_r")), provider));
  write("unsigned", response(assertion("_a", "mara")));

  struct Row {
    const char* arguments;
    int status;
    const char* out;
  } const rows[] = {
      {"key good", 0, "accepted: mara\n"},
      {"key good https://tv.example", 0, "accepted: mara\n"},
      {"key good https://tv.example.evil", 1,
       "refused: an assertion is meant for another audience\n"},
      {"key named", 0, "accepted: sv\n"},
      {"key two", 1, "refused: an assertion does not hold now\n"},
      {"key narrow https://tv.example", 1, "refused: an assertion is meant for another audience\n"},
      {"key expired", 1, "refused: SAMLParserErrorDomain 401\n"},
      {"key denied", 1,
       "refused: the provider's status is urn:oasis:names:tc:SAML:2.0:status:Responder\n"},
      {"key empty", 1, "refused: there is no assertion that can be read\n"},
      {"key unsigned", 1, "refused: there is no signature\n"},
      {"good good", 1, "refused: the certificate cannot be read\n"},
      {"key absent", 2, ""},
      {"key", 2, ""},
  };
  for (const Row& row : rows) {
    const std::string command = "cd " + folder.string() + " && " PROGRAM " " + row.arguments;
    std::FILE* const pipe = popen((command + " 2>errors").c_str(), "r");
    std::string out;
    for (char line[256]; std::fgets(line, sizeof line, pipe) != nullptr;) out += line;
    const int status = pclose(pipe);
    EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, row.status) << row.arguments;
    EXPECT_EQ(out, row.out) << row.arguments;
    EXPECT_EQ(fs::file_size(folder / "errors") > 0, row.status == 2) << row.arguments;
  }
  fs::remove_all(folder);
}

}  // namespace
}  // namespace verify_then_read
