#include "kestrelink/signin/Algorithms.h"

#include <algorithm>
#include <string_view>

#include "kestrelink/signin/Refusal.h"

namespace kestrelink::signin {
namespace {

bool isP256(const EVP_PKEY* key) {
  char name[32] = "";
  return EVP_PKEY_get_group_name(key, name, sizeof name, nullptr) == 1 &&
         std::string_view(name) == "prime256v1";
}

}  // namespace

#define KESTRELINK_DSIG "http://www.w3.org/2000/09/xmldsig#"
#define KESTRELINK_MORE "http://www.w3.org/2001/04/xmldsig-more#"
#define KESTRELINK_ENC "http://www.w3.org/2001/04/xmlenc#"

Algorithms signatureMethods() {
  static constexpr Algorithm kMethods[] = {
      {KESTRELINK_MORE "rsa-sha256", &xmlSecOpenSSLTransformRsaSha256GetKlass, false, &EVP_sha256,
       "RSA"},
      {KESTRELINK_MORE "rsa-sha384", &xmlSecOpenSSLTransformRsaSha384GetKlass, false, &EVP_sha384,
       "RSA"},
      {KESTRELINK_MORE "rsa-sha512", &xmlSecOpenSSLTransformRsaSha512GetKlass, false, &EVP_sha512,
       "RSA"},
      {KESTRELINK_DSIG "rsa-sha1", &xmlSecOpenSSLTransformRsaSha1GetKlass, true, &EVP_sha1, "RSA"},
      {KESTRELINK_MORE "ecdsa-sha256", &xmlSecOpenSSLTransformEcdsaSha256GetKlass, false,
       &EVP_sha256, "EC"},
      {KESTRELINK_MORE "ecdsa-sha384", &xmlSecOpenSSLTransformEcdsaSha384GetKlass, false,
       &EVP_sha384, "EC"},
      {KESTRELINK_MORE "ecdsa-sha512", &xmlSecOpenSSLTransformEcdsaSha512GetKlass, false,
       &EVP_sha512, "EC"},
      {KESTRELINK_MORE "ecdsa-sha1", &xmlSecOpenSSLTransformEcdsaSha1GetKlass, true, &EVP_sha1,
       "EC"},
  };
  return kMethods;
}

Algorithms digestMethods() {
  static constexpr Algorithm kMethods[] = {
      {KESTRELINK_ENC "sha256", &xmlSecOpenSSLTransformSha256GetKlass},
      {KESTRELINK_MORE "sha384", &xmlSecOpenSSLTransformSha384GetKlass},
      {KESTRELINK_ENC "sha512", &xmlSecOpenSSLTransformSha512GetKlass},
      {KESTRELINK_DSIG "sha1", &xmlSecOpenSSLTransformSha1GetKlass, true},
  };
  return kMethods;
}

// Comments are never part of what "#" and an ID refer to, so the forms with them add none.
Algorithms canonicalForms() {
  static constexpr Algorithm kForms[] = {
      {"http://www.w3.org/2001/10/xml-exc-c14n#", &xmlSecTransformExclC14NGetKlass},
      {"http://www.w3.org/2001/10/xml-exc-c14n#WithComments",
       &xmlSecTransformExclC14NWithCommentsGetKlass},
      {"http://www.w3.org/TR/2001/REC-xml-c14n-20010315", &xmlSecTransformInclC14NGetKlass},
      {"http://www.w3.org/TR/2001/REC-xml-c14n-20010315#WithComments",
       &xmlSecTransformInclC14NWithCommentsGetKlass},
      {"http://www.w3.org/2006/12/xml-c14n11", &xmlSecTransformInclC14N11GetKlass},
      {"http://www.w3.org/2006/12/xml-c14n11#WithComments",
       &xmlSecTransformInclC14N11WithCommentsGetKlass},
  };
  return kForms;
}

const Algorithm& accepted(Algorithms list, const std::string& uri, bool acceptSha1,
                          const char* what) {
  const auto found = std::find_if(list.begin(), list.end(),
                                  [&uri](const Algorithm& each) { return uri == each.uri; });
  const std::string named = "the " + std::string(what) + " " + quoted(uri);
  if (found == list.end()) refuse(Reason::algorithm, named + " is not accepted");
  if (found->isSha1 && !acceptSha1) {
    refuse(Reason::sha1, named + " is SHA-1, which is accepted only with Policy::acceptSha1");
  }
  return *found;
}

const Algorithm& methodOf(const EVP_PKEY* key) {
  const bool isRsa = EVP_PKEY_is_a(key, "RSA") == 1;
  require(isRsa || isP256(key), Reason::notConfigured,
          "the client's signing key is neither RSA nor EC on the curve P-256");
  const Algorithms all = signatureMethods();
  return *std::find_if(all.begin(), all.end(), [isRsa](const Algorithm& each) {
    return each.digest == &EVP_sha256 && std::string_view(each.key) == (isRsa ? "RSA" : "EC");
  });
}

}  // namespace kestrelink::signin
