// The provider's metadata and the client's.

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "kestrelink/signin/Certificates.h"
#include "kestrelink/signin/Client.h"
#include "kestrelink/signin/Dates.h"
#include "kestrelink/signin/Provider.h"
#include "kestrelink/signin/Signature.h"

#include "tests/support/Support.h"

namespace kestrelink::signin {
namespace {

struct KeyPair {
  std::string key, certificate;
};

KeyPair newKeyPair() {
  const std::string stem = ::testing::TempDir() + "signin-" + std::to_string(getpid());
  const std::string command =
      "openssl req -x509 -newkey rsa:2048 -nodes -subj /CN=x -days 1 -keyout " + stem +
      ".key -out " + stem + ".pem 2>/dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0);
  KeyPair pair{fuzz::contentOf(stem + ".key"), fuzz::contentOf(stem + ".pem")};
  EXPECT_EQ(std::system(("rm " + stem + ".key " + stem + ".pem").c_str()), 0);
  return pair;
}
const KeyPair& pair(std::size_t index) {
  static const std::vector<KeyPair> all = {newKeyPair(), newKeyPair()};
  return all[index];
}

std::string replaced(std::string text, const std::vector<std::pair<std::string, std::string>>& by) {
  for (const auto& [what, with] : by) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
      text.replace(at, what.size(), with);
    }
  }
  return text;
}

std::string expanded(const std::string& line) {
  const auto keyInfo = [](const std::string& certificate) {
    return "<ds:X509Data><ds:X509Certificate>" + certificate +
           "</ds:X509Certificate></ds:X509Data>";
  };
  const auto key = [&](std::size_t index) {
    std::string base64 = base64OfCertificate(pair(index).certificate).value();
    return keyInfo(base64.insert(76, "\n \t"));
  };
  return replaced(
      line, {{"<Entities ", "<EntitiesDescriptor $m "},
             {"</Entities>", "</EntitiesDescriptor>"},
             {"<Entity>", "<EntityDescriptor $m entityID=\"https://idp.example\">"},
             {"<Entity ", "<EntityDescriptor $m entityID=\"https://idp.example\" "},
             {"</Entity>", "</EntityDescriptor>"},
             {"<Idp", "<IDPSSODescriptor $p"},
             {"</Idp>", "</IDPSSODescriptor>"},
             {"$m", "xmlns=\"urn:oasis:names:tc:SAML:2.0:metadata\""},
             {"$p", "protocolSupportEnumeration=\"urn:x urn:oasis:names:tc:SAML:2.0:protocol\""},
             {"$b:", "Binding=\"urn:oasis:names:tc:SAML:2.0:bindings:"},
             {"<Info>", "<ds:KeyInfo xmlns:ds=\"http://www.w3.org/2000/09/xmldsig#\">"},
             {"</Info>", "</ds:KeyInfo>"},
             {"$1", key(0)},
             {"$2", key(1)},
             {"$0", keyInfo("PHIvPg==")}});
}

std::string described(const Provider& provider) {
  constexpr const char* kBindings[] = {" redirect ", " post ", " soap "};
  std::string text = provider.entityId;
  const auto add = [&](const char* name, const std::vector<Endpoint>& endpoints) {
    for (const Endpoint& each : endpoints) {
      text += "\n" + (name + (kBindings[static_cast<int>(each.binding)] + each.url));
    }
  };
  add("sign-on", provider.signOn);
  add("logout", provider.logout);
  add("attributes", provider.attributes);
  add("decisions", provider.decisions);
  for (const std::string& certificate : provider.signingCertificates) {
    text += certificate == pair(0).certificate ? "\nkey 1" : "\nkey 2";
  }
  if (provider.wantsSignedRequests) text += "\nwants signed requests";
  if (provider.validUntil) text += "\nuntil " + textOf(*provider.validUntil);
  return text;
}

TEST(SignInMetadata, GoldenProviders) {
  testing::expectCases("tests/signin/cases/providers.txt", [](const std::string& line) {
    std::string reason;
    const auto provider = providerFromMetadata(expanded(line), "https://idp.example", reason);
    return provider ? described(*provider) : reason;
  });
}

// Only what the certificate's key signed is looked at, whatever stands around it.
TEST(SignInMetadata, Signed) {
  const std::string entity = expanded("<Entity ID=\"_1\"><Idp/></Entity>");
  const std::string other =
      expanded("<Entity ID=\"_2\" validUntil=\"2020-01-01T00:00:00Z\"><Idp/></Entity>");
  const auto all = [](const std::string& inside) {
    return expanded("<Entities ID=\"_0\" validUntil=\"9999-01-01T00:00:00Z\">") + inside +
           "</EntitiesDescriptor>";
  };
  const auto sign = [](const std::string& xml, std::size_t by) {
    const std::string text = withSignature(xml, pair(by).key, pair(by).certificate);
    return text.starts_with("<?xml") ? text.substr(text.find('\n') + 1) : text;
  };
  const std::string changed = replaced(sign(entity, 0), {{"<IDP", "<!----><x/><IDP"}});
  const struct {
    std::string metadata, expected;
  } rows[] = {
      {entity, "the metadata of the provider is not signed"},
      {sign(entity, 0), "https://idp.example"},
      {sign(all(entity), 0), "https://idp.example\nuntil 9999-01-01T00:00:00Z"},
      {all(sign(entity, 0)), "https://idp.example"},
      {sign(all(sign(entity, 1)), 0), "https://idp.example\nuntil 9999-01-01T00:00:00Z"},
      {sign(all(sign(entity, 0)), 1), "https://idp.example"},
      {sign(entity, 1), "signature"},
      {changed, "signature"},
      {all(sign(entity, 0) + other), "there is more than one entity"},
      {all(sign(expanded("<Entities ID=\"_3\"/>"), 0) + entity),
       "the metadata of the provider is not signed"},
  };
  for (const auto& [metadata, expected] : rows) {
    std::string reason;
    const auto provider =
        providerFromMetadata(metadata, "https://idp.example", reason, pair(0).certificate);
    const std::string found = provider ? described(*provider) : reason;
    EXPECT_TRUE(provider ? found == expected : found.find(expected) != std::string::npos)
        << metadata << "\n"
        << found;
  }
}

// A federation: its size, and that one provider is found in it.
TEST(SignInMetadata, Federation) {
  std::string all = expanded("<Entities >");
  const std::string role =
      expanded("<Idp><KeyDescriptor><Info>$1</Info></KeyDescriptor></Idp></Entity>");
  for (int index = 0; all.size() < 1'000'000; ++index) {
    all +=
        "<EntityDescriptor entityID=\"https://idp.example/" + std::to_string(index) + "\">" + role;
  }
  all += "</EntitiesDescriptor>";
  std::string reason;
  const auto provider = providerFromMetadata(all, "https://idp.example/300", reason);
  EXPECT_TRUE(provider && described(*provider) == "https://idp.example/300\nkey 1") << reason;
}

TEST(SignInMetadata, OfTheClient) {
  Client client{.entityId = "https://tv.example/?a&<b>\"é",
                .assertionConsumer = "https://tv.example/acs?a&b"};
  for (const bool isFull : {false, true}) {
    if (isFull) {
      client.logoutService = "https://tv.example/out";
      client.signingKey = pair(0).key;
      client.signingCertificate = pair(0).certificate;
      client.encryptionCertificate = pair(1).certificate;
    }
    Policy policy;
    policy.signRequests = true;
    const std::string file = ::testing::TempDir() + "signin-client-" + std::to_string(getpid());
    std::ofstream(file) << metadataOf(client, policy);
    const std::string validate =
        "XML_CATALOG_FILES=" SOURCE_DIR
        "/tests/signin/schemas.xml xmllint --nonet --noout --schema "
        "/usr/share/xml/opensaml/saml-schema-metadata-2.0.xsd 2>/dev/null " +
        file;
    EXPECT_EQ(std::system(validate.c_str()), 0);
    std::filesystem::remove(file);
  }
  for (const char* bad : {"\x01", "\xE9"}) {
    client.entityId = bad;
    EXPECT_EQ(metadataOf(client), "");
  }
}

}  // namespace
}  // namespace kestrelink::signin
