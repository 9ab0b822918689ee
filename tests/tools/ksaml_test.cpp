// The command-line tool, run as a program.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <nlohmann/json.hpp>

#include "tests/support/LibxmlVersion.h"
#include "tests/support/Support.h"

namespace {

namespace fs = std::filesystem;

const std::string kGolden = SOURCE_DIR "/tests/golden/";
const std::string kSample = SOURCE_DIR "/tests/fixtures/answer.xml";

struct Outcome {
  int status;
  std::string out;

  void says(const std::vector<std::string>& expected) const {
    for (const std::string& part : expected) {
      EXPECT_NE(out.find(part), std::string::npos) << part << "\nis not in\n" << out;
    }
  }
};

Outcome ksaml(const std::string& arguments, const std::string& program = KSAML) {
  std::FILE* const pipe = popen((program + " " + arguments).c_str(), "r");
  std::string out;
  for (char chunk[4096]; const std::size_t length = std::fread(chunk, 1, sizeof chunk, pipe);) {
    out.append(chunk, length);
  }
  const int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out};
}

// What the tool says of each message NAME.xml is kept in NAME.json.
TEST(Ksaml, GoldenAnswers) {
  const std::map<std::string, std::string> options = {
      {"entitlements", "--no-schema --resource https://tv.example/ch/1 --resource none:2 "},
      {"odd", "--no-schema "}};
  std::map<std::string, std::string> texts;
  for (const auto& entry : fs::directory_iterator(kGolden)) {
    const std::string name = entry.path().stem();
    if (entry.path().extension() != ".xml") continue;
    const std::string more = options.contains(name) ? options.at(name) : "";
    const Outcome run = ksaml("read --json " + more + entry.path().string() + " 2>/dev/null");
    const auto report = nlohmann::ordered_json::parse(run.out);
    texts[name + ".json"] = fuzz::withoutForbidden(report.dump(2)) + "\n";
    EXPECT_EQ(run.status, report["accepted"] ? 0 : 1) << name;
    EXPECT_EQ(run.out.find('\n'), run.out.size() - 1) << "one line a message";
  }
  kestrelink::testing::expectAllKept("tests/golden/", ".json", texts);
}

TEST(Ksaml, ExitStatus) {
  const std::pair<std::string, int> rows[] = {
      {"read " + kSample, 0},
      {"read --cached " + kGolden + "expired.xml", 0},
      {"read " + kSample + " " + kGolden + "expired.xml", 1},
      {"read - < " + kSample, 0},
      {"read /absent " + kGolden + "expired.xml", 2},
      {"read --base64 " + kSample, 2},
      {"read", 2},
      {"read --unknown x", 2},
      {"", 2},
      {"request logout --soap --base64", 2},
      {"request logout --redirect urn:u --soap", 2},
      {"read --json " + kSample + " > /dev/full", 2},
      {"--help", 0},
      {"read --help", 0},
      {"--version", 0},
  };
  for (const auto& [arguments, status] : rows) {
    EXPECT_EQ(ksaml(arguments + " 2>/dev/null").status, status) << arguments;
  }
  EXPECT_EQ(ksaml("read --json /absent " + kSample + " 2>&1 >/dev/null").out,
            "ksaml: cannot read /absent: No such file or directory\n");
  EXPECT_EQ(ksaml("read " + kGolden + "no-xml.xml 2>&1 >/dev/null").out,
            "kestrelink-saml: libxml2: error domain 1 code 4 line 1\n")
      << "a rejected message is read once";
  ksaml("read --json /absent " + kSample + " 2>/dev/null").says({"\"accepted\":true"});
}

// A message reads the same whatever carried it.
TEST(Ksaml, Carriers) {
  const std::string xml = "message=$(cat " + kGolden + "success.xml); ";
  const std::string posted = "b=$(sed 's/+/%2B/g;s/=/%3d/g' " + kGolden + "success.base64); ";
  const std::string rows[] = {
      "cat " + kGolden + "success.base64",
      "fold -w 76 " + kGolden + "success.base64",
      "gzip -9nc " + kGolden + "success.xml | tail -c +11 | head -c -8 | base64",
      posted + "echo \"SAMLResponse=$b&RelayState=x\"",
      posted + "echo \"https://tv.example/acs?RelayState=x&SAMLResponse=$b#top\"",
      xml +
          "printf '%s' \"<?xml version='1.0'?><!-- <e> --><s:Envelope "
          "xmlns:s='http://schemas.xmlsoap.org/soap/envelope/'><s:Header><x/></s:Header><s:Body>"
          "$message</s:Body></s:Envelope>\"",
  };
  std::string expected = ksaml("read --json " + kGolden + "success.xml").out;
  expected.replace(expected.find("success.xml"), 11, "-");
  for (const std::string& carrier : rows) {
    const std::string carried = "(" + carrier + ") | " KSAML;
    EXPECT_EQ(ksaml("read --json -", carried).out, expected) << carrier;
    for (const char* const kind : {"authn --issuer I", "authz --channel C --resource R"}) {
      ksaml("request " + std::string(kind) + " --subject-from - 2>&1", carried)
          .says({"<saml:Subject "});
    }
  }
  EXPECT_EQ(ksaml("read --json --base64 - < " + kGolden + "success.base64").out, expected);

  const std::pair<std::string, std::pair<int, std::string>> others[] = {
      {"request authn --standard --issuer I --redirect 'https://idp.example/?a#f'",
       {1, "\"root\":\"AuthnRequest\""}},
      {"--version | sed 's/.*/<!-- not closed/'", {1, "\"code\":100"}},
      {"request logout --soap 2>/dev/null", {1, "\"root\":null"}},
      {"request logout --soap --standard --name-id-from " + kSample,
       {1, "\"root\":\"LogoutRequest\""}},
  };
  for (const auto& [written, read] : others) {
    const Outcome run = ksaml("read --json - 2>/dev/null", KSAML " " + written + " | " KSAML);
    EXPECT_EQ(run.status, read.first) << written;
    run.says({read.second});
  }
  ksaml("read --json --no-schema -",
        "echo \"<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Body/>"
        "</e:Envelope>\" | " KSAML)
      .says({"\"root\":\"Envelope\"", "\"code\":102"});
  ksaml("request authn --standard --issuer I --redirect 'https://idp.example/?a#f'")
      .says({"https://idp.example/?a&SAMLRequest=", "#f\n"});
}

// Base64 of what inflates to 32 MB of zeros; a stream that is cut off; what is none.
TEST(Ksaml, RefusesWhatNoCarrierCarries) {
  const std::string bomb =
      "(head -c 33554432 /dev/zero | gzip -9n | tail -c +11 | head -c -8 | base64 -w0) | " KSAML;
  EXPECT_EQ(ksaml("read - 2>&1", bomb).out, "ksaml: - inflates to more than 8 MB\n");
  EXPECT_EQ(ksaml("read - 2>&1", "printf 'SAMLResponse=%%%%' | " KSAML).out,
            "ksaml: - holds a parameter that is not base64\n");
  ksaml("read - 2>/dev/null", "echo SAMLResponse=7VhZ | " KSAML)
      .says({"rejected: it is not UTF-8 text"});
}

TEST(Ksaml, SaysWhatTheSchemaRefuses) {
  const std::string kind[] = {"authn --issuer I --provider-name P --acs-url https://tv.example/acs",
                              "authz --channel C --resource urn:r", "logout --session-index s"};
  const std::string who[] = {"", " --subject-from " + kSample, " --name-id-from " + kSample};
  for (std::size_t row = 0; row < 3; ++row) {
    const std::string request = "request " + kind[row] + who[row] + " --destination urn:d";
    ksaml(request + " 2>&1 >/dev/null")
        .says({"ksaml: the SAML 2.0 protocol schema refuses", "--standard"});
    EXPECT_EQ(ksaml(request + " --standard 2>&1 >/dev/null").out, "") << request;
    ksaml(request + " --standard").says({" Destination=\"urn:d\""});
  }
  const Outcome noUrl = ksaml("request authn --issuer I --standard --destination 'http://[' 2>&1");
  EXPECT_EQ(noUrl.out, "ksaml: the SAML 2.0 protocol schema refuses what the request was given\n");
  EXPECT_EQ(noUrl.status, 2);
  const Outcome query = ksaml("request attributes --channel C --standard 2>&1");
  EXPECT_EQ(query.out, "ksaml: there is no standard form: the query has no subject\n");
  EXPECT_EQ(query.status, 2);
}

TEST(Ksaml, SaysWhyForPeople) {
  const std::pair<std::string, std::vector<std::string>> rows[] = {
      {kSample,
       {"answer.xml: accepted\n", "mara.lindqvist", "until 2096-02-14T20:15:01Z", "proceed",
        "55802, 55804"}},
      {"--no-schema " + kSample, {"accepted\n  not validated: no schema\n"}},
      {kGolden + "expired.xml",
       {"rejected: now is outside the time window", "SAMLParserErrorDomain 401", "expired by ",
        "User            erin\n"}},
      {"--cached " + kGolden + "not-a-response.xml",
       {"its root is no response: nothing was judged"}},
      {kGolden + "needs-ui.xml", {"show the provider's sign-in user interface"}},
      {"--no-schema --resource https://tv.example/ch/1 --resource '\033[31m' " + kGolden +
           "entitlements.xml",
       {"Permit", "\\u001b[31m"}},
      {kGolden + "no-conditions.xml", {"no assertion has conditions"}},
      {kGolden + "standard.xml",
       {"Signed          Assertion (not verified)", "https://tv.example, https://other.example",
        "In response to  _q1", "Permit for Play", "it has an offset from UTC"}},
      {kGolden + "invalid.xml",
       {"not found valid against the SAML 2.0 protocol schema", "ERROR 1845", "line 3"}},
      {kGolden + "not-a-response.xml", {"its root element is neither Response nor LogoutResponse"}},
      {kGolden + "no-xml.xml", {"there is no XML in it", "XMLWrapperErrorDomain 200"}},
      {kGolden + "encrypted.xml",
       {"encrypted.xml: accepted, but its assertions are encrypted: nothing was read\n",
        "Encrypted       1 more, not read"}},
      {"--no-schema " + kGolden + "odd.xml",
       {"\"2030-01-01T00:00:00.5Z\" (does not parse: read as absent)", "not yet valid, for ",
        "[31mred\\u009b", "it has a fraction of a second"}},
  };
  for (const auto& [arguments, expected] : rows) {
    const Outcome run = ksaml("read " + arguments + " 2>/dev/null");
    run.says(expected);
    EXPECT_EQ(run.out.find('\033'), std::string::npos) << "colour is for terminals";
  }
}

TEST(Ksaml, MakesRequests) {
  const std::string subject = " --subject-from " + kSample;
  const std::pair<std::string, std::vector<std::string>> written[] = {
      {"authn --issuer I --provider-name P --passive --force-authn" + subject,
       {"<samlp:AuthnRequest ", "ProviderID=\"P\"", ">t-58f20c7be1<"}},
      {"attributes --channel C --attribute A --attribute B=1,2" + subject,
       {"Name=\"A\"/>", ">1</saml:AttributeValue>", ">2</saml:AttributeValue>"}},
      {"authz --channel C --resource http://tv.example/1", {"<Action>Play</Action>"}},
      {"authz --channel C --resource x --action A --action B", {"<Action>A<", "<Action>B<"}},
      {"logout --issuer I --reason R --not-on-or-after 2030-01-31T12:00:00Z --session-index s",
       {"NotOnOrAfter=\"2030-01-31T12:00:00Z\"", "<SessionIndex>s<"}},
      {"logout --not-on-or-after 2038-01-19T03:14:08Z", {"\"2038-01-19T03:14:08Z\""}},
      {"logout --base64", {"PHNhbWxwOkxvZ291dFJlcXVlc3Qg"}},
  };
  for (const auto& [arguments, expected] : written) {
    const Outcome run = ksaml("request " + arguments);
    EXPECT_EQ(run.status, 0) << arguments;
    run.says(expected);
  }
  const std::string refused[] = {"authn",
                                 "authn --issuer I --subject-from /absent",
                                 "authn --issuer I --subject-from " + kGolden + "denied.xml",
                                 "logout --not-on-or-after 2030-02-30T12:00:00Z",
                                 "logout --not-on-or-after 2030-01-31",
                                 "logout --not-on-or-after 0000-01-31T12:00:00Z",
                                 "logout --name-id-from " + kGolden + "denied.xml",
                                 ""};
  for (const std::string& arguments : refused) {
    const Outcome run = ksaml("request " + arguments + " 2>/dev/null");
    EXPECT_EQ(run.status, 2) << arguments;
    EXPECT_EQ(run.out, "") << arguments;
  }
}

// A copy without its bundle reads without validation, and says so; a moved tree keeps its bundle.
TEST(Ksaml, MovedTrees) {
  const fs::path moved = ::testing::TempDir() + "kestrelink-moved-" + std::to_string(::getpid());
  fs::create_directories(moved / "lib");
  fs::create_directories(moved / "bin");
  fs::copy(BUILD_DIR "/bin/ksaml", moved / "bin/ksaml");
  for (const auto& file : fs::directory_iterator(BUILD_DIR "/lib")) {
    if (file.path().filename().string().find(".so") != std::string::npos) {
      fs::copy(file.path(), moved / "lib" / file.path().filename(),
               fs::copy_options::copy_symlinks);
    }
  }
  const std::string program = EMULATOR + (moved / "bin/ksaml").string();
  const Outcome bare = ksaml("read " + kSample, program);
  bare.says({"not validated: no schema"});
  EXPECT_EQ(bare.status, 0);
  fs::copy(BUILD_DIR "/share", moved / "share", fs::copy_options::recursive);
  const std::string late = "touch -d 2040-01-01 " + (moved / "share/*/*; ").string();
  const Outcome whole = ksaml("read " + kSample, late + program);
  EXPECT_EQ(whole.out.find("not validated"), std::string::npos);
  EXPECT_EQ(ksaml("read " + kGolden + "invalid.xml 2>/dev/null", program).status, 1);
  fs::remove_all(moved);
}

}  // namespace
