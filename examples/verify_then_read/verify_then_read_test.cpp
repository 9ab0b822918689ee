// Keys, certificates and messages are made here; every attack starts from what the provider signed.

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xmlsec/openssl/evp.h>
#include <xmlsec/xmldsig.h>
#include <xmlsec/xmltree.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "SignIn.h"
#include "SignedText.h"
#include "VerifiedResponse.h"
#include "XmlTree.h"

namespace verify_then_read {
namespace {

struct Signer {
  std::shared_ptr<EVP_PKEY> pair;
  std::string certificate;

  explicit Signer(EVP_PKEY* made) : pair(made, &EVP_PKEY_free) {
    const std::unique_ptr<X509, decltype(&X509_free)> x509(X509_new(), &X509_free);
    X509_gmtime_adj(X509_getm_notBefore(x509.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(x509.get()), 3600);
    X509_set_pubkey(x509.get(), made);
    X509_sign(x509.get(), made, EVP_sha256());
    const std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new(BIO_s_mem()), &BIO_free);
    PEM_write_bio_X509(bio.get(), x509.get());
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    certificate.assign(data, static_cast<std::size_t>(size));
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

const std::string kExclusive = "http://www.w3.org/2001/10/xml-exc-c14n#";
const std::string kInclusive = "http://www.w3.org/TR/2001/REC-xml-c14n-20010315";
const std::string kMore = "http://www.w3.org/2001/04/xmldsig-more#";
const std::string kOld = "http://www.w3.org/2000/09/xmldsig#";
const std::string kRsaSha256 = kMore + "rsa-sha256";
const std::string kCanonical = "<ds:Transform Algorithm='" + kExclusive + "'/>";

using Parts = std::vector<std::pair<const char*, std::string>>;

std::string filled(std::string text, const Parts& parts) {
  for (const auto& [name, part] : parts) text = replaced(text, name, part);
  return text;
}

// A signature still to be made.
std::string blank(const std::string& uri) {
  return replaced(R"(<ds:Signature xmlns:ds='http://www.w3.org/2000/09/xmldsig#'><ds:SignedInfo>
<ds:CanonicalizationMethod Algorithm='http://www.w3.org/2001/10/xml-exc-c14n#'/><ds:SignatureMethod
Algorithm='http://www.w3.org/2001/04/xmldsig-more#rsa-sha256'/><ds:Reference URI='@uri'
><ds:Transforms><ds:Transform Algorithm='http://www.w3.org/2000/09/xmldsig#enveloped-signature'/>
<ds:Transform Algorithm='http://www.w3.org/2001/10/xml-exc-c14n#'/></ds:Transforms><ds:DigestMethod
Algorithm='http://www.w3.org/2001/04/xmlenc#sha256'/><ds:DigestValue/></ds:Reference>
</ds:SignedInfo><ds:SignatureValue/></ds:Signature>)",
                  "@uri", uri);
}

const std::string kSchema = " xmlns:xs='http://www.w3.org/2001/XMLSchema'";

// Exclusive canonical form leaves the declaration of "xs" out.
std::string assertion(const std::string& id, const std::string& user,
                      const std::string& signature = "", const std::string& inside = "") {
  return filled(R"(<saml:Assertion ID='@id' Version='2.0' IssueInstant='2026-01-15T20:15:00Z'
><saml:Issuer>https://idp.example</saml:Issuer>@signature
<saml:Subject><saml:NameID>@user</saml:NameID><saml:SubjectConfirmation
Method='urn:oasis:names:tc:SAML:2.0:cm:bearer'><saml:SubjectConfirmationData InResponseTo='_q'
Recipient='https://tv.example/in' NotOnOrAfter='2097-01-15T20:20:01Z'/></saml:SubjectConfirmation>
</saml:Subject><saml:Conditions NotOnOrAfter='2096-01-15T20:20:02Z'><saml:AudienceRestriction>
<saml:Audience>https://tv.example</saml:Audience></saml:AudienceRestriction></saml:Conditions>
<saml:Advice>@inside</saml:Advice><saml:AuthnStatement AuthnInstant='2026-01-15T20:15:00Z'
SessionNotOnOrAfter='2098-01-15T20:20:03Z'><saml:AuthnContext><saml:AuthnContextClassRef
>urn:oasis:names:tc:SAML:2.0:ac:classes:Password</saml:AuthnContextClassRef></saml:AuthnContext>
</saml:AuthnStatement><saml:AttributeStatement><saml:Attribute Name='Language'>
<saml:AttributeValue xmlns:xs='http://www.w3.org/2001/XMLSchema' xsi:type='xs:string'>sv</saml:AttributeValue></saml:Attribute>
</saml:AttributeStatement></saml:Assertion>)",
                {{"@id", id}, {"@signature", signature}, {"@user", user}, {"@inside", inside}});
}

std::string response(const std::string& content, const std::string& signature = "",
                     const std::string& id = "_r", const std::string& extensions = "<x:x/>") {
  return filled(
      R"(<samlp:Response xmlns:samlp='urn:oasis:names:tc:SAML:2.0:protocol'
xmlns:saml='urn:oasis:names:tc:SAML:2.0:assertion' xmlns:x='urn:x'
xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' ID='@id' Version='2.0'
IssueInstant='2026-01-15T20:15:00Z'><saml:Issuer>https://idp.example</saml:Issuer>@signature
<samlp:Extensions>@extensions</samlp:Extensions>
<samlp:Status><samlp:StatusCode Value='urn:oasis:names:tc:SAML:2.0:status:Success'/></samlp:Status>
@content</samlp:Response>)",
      {{"@id", id}, {"@signature", signature}, {"@extensions", extensions}, {"@content", content}});
}

// Fills in the first signature of the text, whatever it refers to.
std::string sign(const std::string& text, const Signer& signer) {
  const Owned<xmlDoc> document = parsed(text);
  xmlNode* const root = xmlDocGetRootElement(document.get());
  const xmlChar* identifiers[] = {BAD_CAST "ID", nullptr};
  xmlSecAddIDs(document.get(), root, identifiers);
  const Owned<xmlSecDSigCtx> context(xmlSecDSigCtxCreate(nullptr));
  EVP_PKEY_up_ref(signer.pair.get());
  context->signKey = xmlSecKeyCreate();
  xmlSecKeySetValue(context->signKey, xmlSecOpenSSLEvpKeyAdopt(signer.pair.get()));
  xmlNode* const signature = xmlSecFindNode(root, xmlSecNodeSignature, xmlSecDSigNs);
  EXPECT_EQ(xmlSecDSigCtxSign(context.get(), signature), 0) << text;
  const std::string dumped = written(document.get());
  return dumped.substr(dumped.find("<samlp:"));
}

std::string outcome(const std::string& text, const Signer& signer) {
  std::string reason;
  const auto trusted = verifiedResponse(text, signer.certificate, reason);
  if (!trusted) return "refused: " + reason;
  Expected expected;
  expected.issuer = "https://idp.example";
  const Outcome read = readVerified(*trusted, expected);
  return (read.verdict == Verdict::SignedIn ? "signed in: " : "not read: ") + read.text;
}

TEST(VerifiedResponse, KeepsWhatWasSignedAndRefusesTheRest) {
  startXmlsec();
  const Signer provider(EVP_RSA_gen(2048)), attacker(EVP_RSA_gen(2048));
  const Signer curve(EVP_EC_gen("P-256"));
  const std::string plain = response(assertion("_a", "mara"), blank("#_r"));
  const std::string whole = sign(plain, provider);
  const std::string inner = response(assertion("_a", "mara", blank("#_a")));
  const std::string part = sign(inner, provider);
  const std::string good = cut(part, "<saml:Assertion", "</saml:Assertion>");
  const std::string taken = cut(good, "<ds:Signature ", "</ds:Signature>");
  const std::string wholeTaken = cut(whole, "<ds:Signature ", "</ds:Signature>");
  const std::string bare = replaced(good, taken, "");
  const auto evil = [](const std::string& signature = "", const std::string& inside = "") {
    return assertion("_e", "mallory", signature, inside);
  };
  const auto altered = [&](std::string_view what, std::string_view with) {
    return sign(replaced(plain, what, with), provider);
  };
  const std::string xpath = "TR/1999/REC-xpath-19991116";
  std::string many;
  for (int each = 0; each < 100; ++each) many += " xmlns:n" + std::to_string(each) + "='urn:n'";
  const std::string listed =
      altered(kCanonical, "<ds:Transform Algorithm='" + kExclusive +
                              "'><e:InclusiveNamespaces PrefixList='xs' xmlns:e='" + kExclusive +
                              "'/></ds:Transform>");
  const std::string reference = cut(plain, "<ds:Reference", "</ds:Reference>");
  const std::string withComments =
      altered(kCanonical, replaced(kCanonical, "n#", "n#WithComments"));
  const std::string xs = kSchema + " ", other = " xmlns:xs='urn:other' ";
  const auto at = [](const char* element, const std::string& declaration) {
    return std::pair(element, element + declaration);
  };
  const std::string back = "<x:x xmlns:saml='urn:y'><saml:Issuer xmlns:saml='" +
                           std::string(kAssertion) + "'>a</saml:Issuer></x:x>";
  const auto declared = [&](const std::string& base, const Parts& parts) {
    return sign(filled(replaced(base, kSchema, ""), parts), provider);
  };
  const char* const kValue = "<saml:AttributeValue";
  const char* const kStatement = "<saml:AttributeStatement";
  const char* const kIn = "signed in: mara until";
  const char* const kNotValid = "not read: the response is not valid against the schema";
  const char* const kElsewhere = "refused: the signature refers to something else";
  const char* const kNotGood = "refused: the signature is not the certificate holder's";
  const char* const kTwice = "refused: an identifier is used twice";
  const char* const kNone = "refused: there is no signature";
  const char* const kMethod = "refused: the signature algorithm is not allowed";
  const char* const kTransforms = "refused: the transforms are not allowed";
  struct Row {
    const char* name;
    std::string text;
    std::string outcome;             // how it begins
    const Signer* signer = nullptr;  // the provider when null
  };
  const Row rows[] = {
      {"signed response", whole, kIn},
      {"signed assertion", part, kIn},
      {"both", sign(filled(part, {at("</saml:Issuer>", blank("#_r"))}), provider), kIn},
      {"ECDSA", sign(replaced(plain, kRsaSha256, kMore + "ecdsa-sha256"), curve), kIn, &curve},
      {"prefix list", listed, kIn},
      {"inclusive", altered(kCanonical, replaced(kCanonical, kExclusive, kInclusive)), kIn},
      {"inclusive signature", altered(kExclusive, kInclusive), kIn},
      // What was not signed is not read, and what was is read in its canonical form.
      {"unsigned issuer", replaced(part, "https://idp", "https://evil"), kIn},
      {"unsigned status", replaced(part, "status:Success", "status:Requester"), kIn},
      {"comment", replaced(part, "mara", "ma<!-- cut -->ra"), kIn},
      {"comment, with comments", replaced(withComments, "mara", "ma<!-- cut -->ra"), kIn},
      {"CDATA", replaced(part, "mara", "ma<![CDATA[ra]]>"), kIn},
      // Declarations that only values use are not signed.
      {"declaration changed", replaced(part, "2001/XMLSchema\"", "2001/X\""), kNotValid},
      {"declaration added", replaced(part, "<saml:Subject", "<saml:Subject xmlns:y='urn:y'"), kIn},
      {"prefix taken", filled(part, {at("<saml:Subject", " xmlns:saml='urn:y'")}), kNotGood},
      {"xs, statement", declared(plain, {at(kStatement, xs)}), kIn},
      {"xs, response", declared(plain, {at("<samlp:Response", xs)}), kIn},
      {"xs, assertion, part", declared(inner, {at("<saml:Assertion", xs)}), kIn},
      {"xs, around, part", declared(inner, {at("<samlp:Response", xs)}), kIn},
      {"xs, again", declared(inner, {at("<samlp:Response", other), at(kValue, xs)}), kIn},
      {"default, value",
       declared(plain, {at(kValue, replaced(xs, ":xs", "")), {"'xs:string", "'string"}}), kIn},
      // A prefix in use stands for something else where it is not, and then is used again.
      {"and back", declared(plain, {at(kValue, xs), {"<x:x/>", back}}), kIn},
      {"xs, nowhere", declared(inner, {}), kNotValid},
      {"xs, other", declared(plain, {at(kStatement, xs), at(kValue, other)}), kNotValid},

      {"moved below", response(evil("", good)), kNone},
      {"moved below, signature taken", response(evil(taken, bare)), kElsewhere},
      {"second assertion first", response(evil() + good), "refused: the response is unsigned"},
      {"in Extensions, signature taken", response(evil(taken), "", "_r", bare), kElsewhere},
      {"Object", altered("</ds:Signature>", "<ds:Object/></ds:Signature>"),
       "refused: the signature has an Object"},
      {"nested", response(evil(), wholeTaken, "_e2", replaced(whole, wholeTaken, "")), kElsewhere},
      {"same ID", response(assertion("_a", "mallory", taken, bare)), kTwice},
      {"same ID, other spelling", replaced(part, "<samlp:Status", "<samlp:Status Id='_a'"), kTwice},
      {"tampered", replaced(part, "mara", "mallory"), kNotGood},
      {"wrong key", part, kNotGood, &attacker},
      {"attacker's key inside",
       sign(filled(plain, {at("SignatureValue/>", "<ds:KeyInfo><ds:KeyValue/></ds:KeyInfo>")}),
            attacker),
       kNotGood},
      {"empty reference", altered("URI='#_r'", "URI=''"), kElsewhere},
      {"XPointer that agrees", sign(response("", blank("#xpointer(/)"), "xpointer(/)"), provider),
       "refused: the signed element's ID is no name"},
      // libxmlsec1 looks at local names only, and so sees the first of the two.
      {"another reference under a prefix", altered("URI='#_r'", "x:URI='' URI='#_r'"), kNotGood},
      {"another algorithm under a prefix",
       altered("SignatureMethod", "SignatureMethod x:Algorithm='" + kOld + "rsa-sha1'"), kNotGood},
      {"two references", altered(reference, reference + reference), "refused: the signature has"},
      {"XPath", replaced(whole, "2000/09/xmldsig#enveloped-signature", xpath), kTransforms},
      {"three transforms", altered(kCanonical, kCanonical + kCanonical), kTransforms},
      {"no canonical form", altered(kCanonical, ""), kTransforms},
      {"SHA-1 signature", altered(kRsaSha256, kOld + "rsa-sha1"), kMethod},
      {"shared secret", replaced(whole, kRsaSha256, kMore + "hmac-sha256"), kMethod},
      {"digest", altered("2001/04/xmlenc#sha256", "2000/09/xmldsig#sha1"), "refused: the digest"},
      {"canonical form 1.1", altered(kExclusive, "http://www.w3.org/2006/12/xml-c14n11"),
       "refused: the canonicalization"},
      {"two signatures", altered("<samlp:Status>", blank("#_r") + "<samlp:Status>"),
       "refused: the response has several signatures"},
      {"unsigned", response(evil()), kNone},
      {"no assertion", response(""), kNone},
      {"unsigned logout",
       filled(part, {{"<samlp:R", "<samlp:LogoutR"}, {"</samlp:R", "</samlp:LogoutR"}}), kNone},
      {"another root", good, "refused: the root is not a response"},
      {"too long", part + std::string(256 * 1024, '\n'), "refused: the response is too long"},
      {"long namespace", replaced(part, "urn:x", std::string(1001, 'x')), "refused: a namespace"},
      {"many namespaces", filled(part, {at("<saml:Subject", many)}), "refused: too many names"},
      {"long list", replaced(listed, "\"xs\"", '"' + many + '"'), "refused: a list of prefixes"},
      {"entity", "<!DOCTYPE r [<!ENTITY m 'mara'>]>" + replaced(part, "mara", "&m;"),
       "refused: the response has a document type"},
      {"not well-formed", part + "<", "refused: the response is not well-formed"},
  };
  for (const Row& row : rows) {
    const std::string found = outcome(row.text, row.signer ? *row.signer : provider);
    EXPECT_EQ(found.substr(0, row.outcome.size()), row.outcome) << row.name << "\n" << row.text;
  }
}

TEST(VerifyThenRead, Program) {
  namespace fs = std::filesystem;
  startXmlsec();
  const Signer provider(EVP_RSA_gen(2048));
  const fs::path folder = fs::temp_directory_path() / ("verify." + std::to_string(getpid()));
  fs::create_directory(folder);
  std::ofstream(folder / "key") << provider.certificate;
  const std::string first = assertion("_a", "mara"), plain = response(first, blank("#_r"));
  const std::string statement = cut(first, "<saml:AuthnStatement", "</saml:AuthnStatement>");
  const std::string confirmation = cut(first, "<saml:SubjectC", "</saml:SubjectConfirmation>");
  const std::string second = replaced(assertion("_b", "mallory"), statement, "");
  const std::string logout = filled(response("", blank("#_r")),
                                    {{"<samlp:Response", "<samlp:LogoutResponse InResponseTo='_l'"},
                                     {"</samlp:Response", "</samlp:LogoutResponse"}});
  const std::string deny =
      "<saml:AuthzDecisionStatement Resource='urn:x' Decision='Deny'><saml:Action "
      "Namespace='urn:x'>Play</saml:Action></saml:AuthzDecisionStatement>";
  const std::string audience = cut(first, "<saml:AudienceR", "</saml:AudienceRestriction>");
  const std::string urn = "urn:oasis:names:tc:SAML:2.0:status:", success = urn + "Success'/>";
  const auto codes = [&](const char* outer, const char* inner) {
    return urn + outer + "'><samlp:StatusCode Value='" + urn + inner + "'/></samlp:StatusCode>";
  };
  const auto with = [&plain](std::string_view what, std::string_view instead) {
    return replaced(plain, what, instead);
  };
  const std::string in = " until 2098-01-15T20:20:03Z";
  const std::string form = " is not of the form 2026-01-15T20:15:02Z";
  const std::string notNow = "the time window of Conditions does not include the current time";
  const std::string noStatement = "there is no authentication statement";
  const std::string otherAudience = "an assertion is meant for another audience";
  struct Row {
    int status;
    std::string line;  // after "refused: " for status 1
    std::string text;
    const char* arguments = "key m";
  } const rows[] = {
      {0, "signed in: mara" + in, plain},
      {0, "signed in: mara" + in, plain, "--audience https://tv.example key - <m"},
      {0, "signed in: mara" + in, plain,
       "--issuer https://idp.example --recipient https://tv.example/in --in-response-to _q key m"},
      {0, "signed in: s v" + in, filled(plain, {{"Language", "username"}, {"sv<", "s&#10;v<"}})},
      {0, "signed in: mara" + in, with("</samlp:Response", second + "</samlp:Response")},
      {0, "signed in: mara" + in,
       with(confirmation, confirmation + replaced(confirmation, "2097", "2026"))},
      {1, notNow, with("</samlp:Response", replaced(second, "2096", "2026") + "</samlp:Response")},
      {1, noStatement, with("<saml:Assertion", second + "<saml:Assertion")},
      {1, noStatement, with(statement, "")},
      {1, noStatement, with(statement, deny)},
      {1, "there is no assertion that can be read", with(first, "")},
      {1, "the authentication statement has no SessionNotOnOrAfter",
       with("SessionNotOnOrAfter='2098-01-15T20:20:03Z'", "")},
      {1, "SessionNotOnOrAfter 2098-01-15T20:20:03.5Z" + form, with("03Z", "03.5Z")},
      {1, "the authentication has expired", with("2098", "2026")},
      {1, "an assertion has no conditions", with(cut(first, "<saml:Cond", "Conditions>"), "")},
      {1, "an assertion's time window has no end", with("NotOnOrAfter='2096", "NotBefore='2025")},
      {1, "NotOnOrAfter 2026-01-15T20:20:02.000Z" + form,
       filled(plain, {{"02Z", "02.000Z"}, {"2096", "2026"}})},
      {1, "NotOnOrAfter 2096-01-15T20:20:02+01:00" + form, with("02Z", "02+01:00")},
      {1, "NotBefore 2096-01-15T20:20:02.000Z" + form,
       with("Conditions", "Conditions NotBefore='2096-01-15T20:20:02.000Z'")},
      {1, notNow, with("2096", "2026")},
      {1, notNow, with("Conditions", "Conditions NotBefore='2095-01-15T20:20:02Z'")},
      {1, "NotOnOrAfter 2097-01-15T20:20:01.000Z" + form, with("01Z", "01.000Z")},
      {1, "the time window of SubjectConfirmationData does not include the current time",
       with("2097", "2026")},
      {1, otherAudience, with(audience, ""), "--audience https://tv.example key m"},
      {1, otherAudience, plain, "--audience https://tv.example.evil key m"},
      {1, otherAudience, with(audience, audience + replaced(audience, "//tv", "//x")),
       "--audience https://tv.example key m"},
      {1, "the response has another issuer", plain, "--issuer https://idp key m"},
      {1, "an assertion has another issuer", with(first, replaced(first, "//idp", "//x")),
       "--issuer https://idp.example key m"},
      {1, "the subject has no confirmation", with(confirmation, ""),
       "--recipient https://tv.example/in key m"},
      {1, "an assertion is meant for another recipient", plain, "--recipient x:y key m"},
      {1, "an assertion is for another request", plain, "--in-response-to _p key m"},
      {1, "the response is for another request", logout, "--in-response-to _p key m"},
      {1, "the certificate cannot be read", plain, "m m"},
      {2, "", plain, "key missing"},
      {2, "", plain, "key ."},
      {2, "", plain, "key"},
      {3, "show the provider's sign-in page", with(success, codes("Responder", "NoPassive"))},
      {4, "denied: " + urn + "Requester " + urn + "RequestDenied",
       with(success, codes("Requester", "RequestDenied"))},
      {4, "denied: " + urn + "Success " + urn + "PartialLogout",
       replaced(logout, success, codes("Success", "PartialLogout"))},
      {5, "logged out", logout, "--in-response-to _l key m"},
  };
  for (const Row& row : rows) {
    std::ofstream(folder / "m") << sign(row.text, provider);
    const std::string command = "cd " + folder.string() + " && " PROGRAM " " + row.arguments;
    std::FILE* const pipe = popen((command + " 2>errors").c_str(), "r");
    std::string out;
    for (char part[256]; std::fgets(part, sizeof part, pipe) != nullptr;) out += part;
    const int ended = pclose(pipe);
    EXPECT_EQ(WIFEXITED(ended) ? WEXITSTATUS(ended) : -1, row.status) << row.line;
    EXPECT_EQ(out, (row.status == 1 ? "refused: " : "") + row.line + (row.status == 2 ? "" : "\n"));
    EXPECT_EQ(fs::file_size(folder / "errors") > 0, row.status == 2) << row.line;
  }
  fs::remove_all(folder);
}

}  // namespace
}  // namespace verify_then_read
