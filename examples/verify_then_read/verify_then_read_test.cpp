// Runs the rows of test/cases.txt: keys, certificates and messages are made here, and every attack
// starts from what the provider signed.

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
#include <map>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "SignedText.h"
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

using Pieces = std::map<std::string, std::string, std::less<>>;

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path);
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

std::string signedIfBlank(const std::string& text, const Signer& signer) {
  const bool isWhole = text.starts_with("<samlp:");
  const bool isBlank = isWhole && text.find("<ds:SignatureValue/>") != std::string::npos;
  return isBlank ? sign(text, signer) : text;
}

// What stands for itself.
Pieces firstPieces() {
  Pieces pieces = {{"unsigned", contentOf(FOLDER "/response.xml")},
                   {"signature", contentOf(FOLDER "/signature.xml")},
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

TEST(VerifyThenRead, Cases) {
  namespace fs = std::filesystem;
  startXmlsec();
  const std::map<std::string, Signer> signers = {{"key", Signer(EVP_RSA_gen(2048))},
                                                 {"attacker", Signer(EVP_RSA_gen(2048))},
                                                 {"curve", Signer(EVP_EC_gen("P-256"))}};
  Pieces pieces = firstPieces();
  const fs::path folder = fs::temp_directory_path() / ("verify." + std::to_string(getpid()));
  fs::create_directory(folder);
  ::setenv("FOLDER", folder.c_str(), 1);
  ::setenv("PROGRAM", PROGRAM, 1);
  for (const auto& [name, signer] : signers) std::ofstream(folder / name) << signer.certificate;
  for (const std::string& line : split(contentOf(FOLDER "/cases.txt"), "\n")) {
    if (line.empty() || line.starts_with('#')) continue;
    const auto row = split(line, " | ");
    if (row.size() == 3) {
      pieces[row[0]] = derived(pieces.at(row[1]), row[2], pieces);
      pieces["signed " + row[0]] = signedIfBlank(pieces[row[0]], signers.at("key"));
      continue;
    }
    ASSERT_EQ(row.size(), 6u) << line;
    const auto base = split(row[1] + " key", " ");
    std::string text = pieces.at(base[0]);
    for (const std::string& changes : {row[2], row[3]}) {
      text = changed(text, changes, pieces);
      text = signedIfBlank(text, signers.at(base[1]));
    }
    std::ofstream(folder / "m") << text;
    const std::string options = row[4] == "-" ? "--issuer https://idp.example key m" : row[4];
    const std::string command = "cd \"$FOLDER\" && \"$PROGRAM\" " + options;
    std::FILE* const pipe = popen((command + " 2>errors").c_str(), "r");
    std::string out(1000, '\0');
    out.resize(std::fread(out.data(), 1, out.size(), pipe));
    const int ended = pclose(pipe), status = WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
    EXPECT_EQ(std::to_string(status) + (out.empty() ? "\n" : " " + out), row[5] + "\n") << line;
    EXPECT_EQ(fs::file_size(folder / "errors") > 0, status == 2) << line;
  }
  fs::remove_all(folder);
}

}  // namespace
}  // namespace verify_then_read
