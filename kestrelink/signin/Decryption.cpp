#include "kestrelink/signin/Decryption.h"

#include <openssl/rsa.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include <libxml/parser.h>

#include "kestrelink/signin/Encoding.h"
#include "kestrelink/signin/Keys.h"
#include "kestrelink/signin/XmlTree.h"

namespace kestrelink::signin {
namespace {

constexpr const char* kEncryption11 = "http://www.w3.org/2009/xmlenc11#";

struct Cipher {
  const char* uri;
  const EVP_CIPHER* (*cipher)();
  bool isAuthentic;  // GCM
};
constexpr Cipher kCiphers[] = {
    {"http://www.w3.org/2009/xmlenc11#aes128-gcm", &EVP_aes_128_gcm, true},
    {"http://www.w3.org/2009/xmlenc11#aes192-gcm", &EVP_aes_192_gcm, true},
    {"http://www.w3.org/2009/xmlenc11#aes256-gcm", &EVP_aes_256_gcm, true},
    {"http://www.w3.org/2001/04/xmlenc#aes128-cbc", &EVP_aes_128_cbc, false},
    {"http://www.w3.org/2001/04/xmlenc#aes192-cbc", &EVP_aes_192_cbc, false},
    {"http://www.w3.org/2001/04/xmlenc#aes256-cbc", &EVP_aes_256_cbc, false},
};

struct Digest {
  const char* uri;
  const EVP_MD* (*digest)();
};
constexpr Digest kDigests[] = {
    {"http://www.w3.org/2000/09/xmldsig#sha1", &EVP_sha1},
    {"http://www.w3.org/2001/04/xmldsig-more#sha224", &EVP_sha224},
    {"http://www.w3.org/2001/04/xmlenc#sha256", &EVP_sha256},
    {"http://www.w3.org/2001/04/xmldsig-more#sha384", &EVP_sha384},
    {"http://www.w3.org/2001/04/xmlenc#sha512", &EVP_sha512},
};
constexpr Digest kMasks[] = {
    {"http://www.w3.org/2009/xmlenc11#mgf1sha1", &EVP_sha1},
    {"http://www.w3.org/2009/xmlenc11#mgf1sha224", &EVP_sha224},
    {"http://www.w3.org/2009/xmlenc11#mgf1sha256", &EVP_sha256},
    {"http://www.w3.org/2009/xmlenc11#mgf1sha384", &EVP_sha384},
    {"http://www.w3.org/2009/xmlenc11#mgf1sha512", &EVP_sha512},
};

template <class List>
const auto& named(const List& list, const std::string& uri, const char* what) {
  const auto found = std::find_if(std::begin(list), std::end(list),
                                  [&uri](const auto& each) { return uri == each.uri; });
  if (found == std::end(list)) {
    refuse(Reason::algorithm, "the " + std::string(what) + " " + quoted(uri) + " is not accepted");
  }
  return *found;
}

const xmlNode* only(const xmlNode* parent, const char* space, const char* name) {
  const auto found = children(parent, space, name);
  if (found.size() != 1) refuseEncrypted();
  return found.front();
}

std::string base64Of(const xmlNode* element) {
  auto bytes = fromBase64(contentOf(element));
  if (!bytes) refuseEncrypted();
  return std::move(*bytes);
}

// A reference to a cipher text elsewhere is not followed.
std::string cipherText(const xmlNode* encrypted) {
  return base64Of(only(only(encrypted, kEncryption, "CipherData"), kEncryption, "CipherValue"));
}

unsigned char* bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }
const unsigned char* bytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

struct Release {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
  void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
};

// The last byte is the number of bytes that are padding; the others may be anything.
std::optional<std::string> withoutPadding(std::string text, std::size_t blockSize) {
  const std::size_t padding = text.empty() ? 0 : static_cast<unsigned char>(text.back());
  if (padding == 0 || padding > blockSize || padding > text.size()) return std::nullopt;
  text.resize(text.size() - padding);
  return text;
}

// Nothing when the padding or, in GCM, the text is not what was encrypted.
std::optional<std::string> deciphered(const Cipher& method, const std::string& key,
                                      std::string_view text) {
  const EVP_CIPHER* const cipher = method.cipher();
  const auto ivSize = static_cast<std::size_t>(EVP_CIPHER_get_iv_length(cipher));
  const std::size_t tagSize = method.isAuthentic ? 16 : 0;
  if (key.size() != static_cast<std::size_t>(EVP_CIPHER_get_key_length(cipher)) ||
      text.size() < ivSize + tagSize) {
    return std::nullopt;
  }
  const std::unique_ptr<EVP_CIPHER_CTX, Release> context(EVP_CIPHER_CTX_new());
  if (!context) throw std::bad_alloc();
  const std::string_view body = text.substr(ivSize, text.size() - ivSize - tagSize);
  std::string tag(text.substr(text.size() - tagSize));
  std::string plain(body.size() + EVP_MAX_BLOCK_LENGTH, '\0');
  int size = 0, rest = 0;
  const bool succeeded =
      EVP_DecryptInit_ex(context.get(), cipher, nullptr, bytes(key), bytes(text)) == 1 &&
      EVP_CIPHER_CTX_set_padding(context.get(), 0) == 1 &&
      (tag.empty() || EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_SET_TAG,
                                          static_cast<int>(tagSize), tag.data()) == 1) &&
      EVP_DecryptUpdate(context.get(), bytes(plain), &size, bytes(body),
                        static_cast<int>(body.size())) == 1 &&
      EVP_DecryptFinal_ex(context.get(), bytes(plain) + size, &rest) == 1;
  if (!succeeded) return std::nullopt;
  plain.resize(static_cast<std::size_t>(size) + static_cast<std::size_t>(rest));
  if (method.isAuthentic) return plain;
  return withoutPadding(plain, static_cast<std::size_t>(EVP_CIPHER_get_block_size(cipher)));
}

/// RSA-OAEP (XML Encryption 1.1, section 5.5.2) as one "EncryptedKey" uses it.
struct Oaep {
  const EVP_MD* digest;
  const EVP_MD* mask;
  std::string label;
  std::string text;
};

Oaep oaepOf(const xmlNode* encryptedKey) {
  const xmlNode* const method = only(encryptedKey, kEncryption, "EncryptionMethod");
  const std::string uri = attribute(method, "Algorithm");
  const bool hasMask = uri == "http://www.w3.org/2009/xmlenc11#rsa-oaep";
  if (!hasMask && uri != "http://www.w3.org/2001/04/xmlenc#rsa-oaep-mgf1p") {
    refuse(Reason::algorithm, "the key encryption " + quoted(uri) + " is not accepted");
  }
  const auto chosen = [method](const char* space, const char* name, const auto& list,
                               const char* what) {
    const xmlNode* const element = firstChild(method, space, name);
    return element == nullptr ? EVP_sha1()
                              : named(list, attribute(element, "Algorithm"), what).digest();
  };
  const xmlNode* const label = firstChild(method, kEncryption, "OAEPparams");
  return {.digest = chosen(kSignature, "DigestMethod", kDigests, "digest of the key encryption"),
          .mask = hasMask ? chosen(kEncryption11, "MGF", kMasks, "mask of the key encryption")
                          : EVP_sha1(),
          .label = label == nullptr ? std::string() : base64Of(label),
          .text = cipherText(encryptedKey)};
}

bool prepare(EVP_PKEY_CTX* context, const Oaep& oaep) {
  if (EVP_PKEY_decrypt_init(context) != 1 ||
      EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_OAEP_PADDING) != 1 ||
      EVP_PKEY_CTX_set_rsa_oaep_md(context, oaep.digest) != 1 ||
      EVP_PKEY_CTX_set_rsa_mgf1_md(context, oaep.mask) != 1) {
    return false;
  }
  if (oaep.label.empty()) return true;
  void* const label = OPENSSL_memdup(oaep.label.data(), oaep.label.size());
  if (label == nullptr) throw std::bad_alloc();
  const int size = static_cast<int>(oaep.label.size());
  if (EVP_PKEY_CTX_set0_rsa_oaep_label(context, label, size) == 1) return true;
  OPENSSL_free(label);
  return false;
}

std::optional<std::string> unwrapped(const Oaep& oaep, EVP_PKEY* key) {
  const std::unique_ptr<EVP_PKEY_CTX, Release> context(EVP_PKEY_CTX_new(key, nullptr));
  if (!context) throw std::bad_alloc();
  std::string result(static_cast<std::size_t>(EVP_PKEY_get_size(key)), '\0');
  std::size_t size = result.size();
  if (!prepare(context.get(), oaep) ||
      EVP_PKEY_decrypt(context.get(), bytes(result), &size, bytes(std::string_view(oaep.text)),
                       oaep.text.size()) != 1) {
    return std::nullopt;
  }
  result.resize(size);
  return result;
}

// Inside the encrypted data or beside it. One for each recipient: so many decryptions cost little.
std::vector<const xmlNode*> encryptedKeys(const xmlNode* data) {
  constexpr std::size_t kMost = 16;
  std::vector<const xmlNode*> keys;
  const auto add = [&keys](const xmlNode* parent) {
    const auto found = children(parent, kEncryption, "EncryptedKey");
    keys.insert(keys.end(), found.begin(), found.end());
  };
  for (const xmlNode* info : children(data, kSignature, "KeyInfo")) add(info);
  add(data->parent);
  if (keys.empty() || keys.size() > kMost) refuseEncrypted();
  return keys;
}

std::string decrypted(const xmlNode* data, const Decryptor& decryptor) {
  const Cipher& cipher = named(
      kCiphers, attribute(only(data, kEncryption, "EncryptionMethod"), "Algorithm"), "encryption");
  const std::string text = cipherText(data);
  require(!decryptor.keysPem.empty(), Reason::notConfigured,
          "a part of the message is encrypted, and the client has no key to decrypt it");
  for (const xmlNode* each : encryptedKeys(data)) {
    const Oaep oaep = oaepOf(each);
    for (const std::string& pem : decryptor.keysPem) {
      const Key key = privateKeyOf(pem);
      const auto contentKey = unwrapped(oaep, key.get());
      auto plain = contentKey ? deciphered(cipher, *contentKey, text) : std::nullopt;
      if (plain) return *plain;
    }
  }
  refuseEncrypted();
}

// An element with the namespace declarations in scope at the place, around the text.
std::string inContext(const xmlNode* place, const std::string& text) {
  std::string xml = "<context";
  const Owned<xmlNs*> inScope(xmlGetNsList(place->doc, place));
  for (xmlNs** each = inScope.get(); each != nullptr && *each != nullptr; ++each) {
    const Owned<xmlChar> uri(xmlEncodeSpecialChars(place->doc, (*each)->href));
    const std::string prefix = textOf((*each)->prefix);
    xml += " xmlns" + (prefix.empty() ? "" : ":" + prefix) + "=\"" + textOf(uri.get()) + "\"";
  }
  return xml + ">" + text + "</context>";
}

bool isOnly(const xmlNode* node, const char* name) {
  return node != nullptr && node->next == nullptr && is(node, kAssertion, name);
}

// Declarations of the encrypted element, which the new one may use, go on with that.
void takeDeclarations(xmlNode* element, xmlNode* encrypted) {
  const auto declares = [element](const xmlChar* prefix) {
    for (const xmlNs* each = element->nsDef; each != nullptr; each = each->next) {
      if (xmlStrEqual(each->prefix, prefix) != 0) return true;
    }
    return false;
  };
  for (xmlNs** link = &encrypted->nsDef; *link != nullptr;) {
    xmlNs* const taken = *link;
    if (declares(taken->prefix)) {
      link = &taken->next;
      continue;
    }
    *link = taken->next;
    taken->next = element->nsDef;
    element->nsDef = taken;
  }
}

struct FreeNodes {
  void operator()(xmlNode* list) const { xmlFreeNodeList(list); }
};

// Parsed twice: alone, where it cannot end what is around it, and at its place.
xmlNode* replaced(xmlNode* encrypted, const char* name, const Decryptor& decryptor) try {
  const std::string plain = decrypted(only(encrypted, kEncryption, "EncryptedData"), decryptor);
  const Owned<xmlDoc> alone = parsed(inContext(encrypted, plain), decryptor.mostBytes);
  if (!isOnly(xmlDocGetRootElement(alone.get())->children, name)) refuseEncrypted();
  xmlNode* made = nullptr;
  constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
  const auto error = xmlParseInNodeContext(encrypted, plain.data(), static_cast<int>(plain.size()),
                                           kOptions, &made);
  std::unique_ptr<xmlNode, FreeNodes> owner(made);
  if (error != XML_ERR_OK || !isOnly(made, name)) refuseEncrypted();
  takeDeclarations(made, encrypted);
  xmlReplaceNode(encrypted, owner.release());
  xmlFreeNode(encrypted);
  return made;
} catch (const Refusal& refusal) {
  if (refusal.reason() == Reason::algorithm || refusal.reason() == Reason::notConfigured) throw;
  refuseEncrypted();
}

struct Encrypted {
  const char* name;
  const char* content;
};
constexpr Encrypted kEncrypted[] = {{"EncryptedAssertion", "Assertion"},
                                    {"EncryptedID", "NameID"},
                                    {"EncryptedAttribute", "Attribute"}};

xmlNode* decryptedAt(xmlNode* node, const Decryptor& decryptor) {
  for (const Encrypted& each : kEncrypted) {
    if (is(node, kAssertion, each.name)) return replaced(node, each.content, decryptor);
  }
  return node;
}

}  // namespace

void refuseEncrypted() {
  refuse(Reason::notDecrypted,
         "the encrypted part cannot be decrypted with the client's keys, or is not what it should "
         "be, or is not signed by the provider in a way that the policy accepts");
}

void decryptAssertions(xmlNode* response, const Decryptor& decryptor) {
  for (xmlNode* each : children(response, kAssertion, "EncryptedAssertion")) {
    replaced(each, "Assertion", decryptor);
  }
}

void decryptBelow(xmlNode* element, const Decryptor& decryptor) {
  for (xmlNode* child = element->children; child != nullptr; child = child->next) {
    if (child->type != XML_ELEMENT_NODE) continue;
    child = decryptedAt(child, decryptor);
    decryptBelow(child, decryptor);
  }
}

}  // namespace kestrelink::signin
