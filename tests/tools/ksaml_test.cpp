// The command-line tool, run as a program.

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/Attack.h"

namespace {

namespace fs = std::filesystem;

const std::string kGolden = SOURCE_DIR "/tests/golden/";
const std::string kSample = SOURCE_DIR "/examples/answer.xml";

struct Outcome {
  int status;
  std::string out;

  void says(const std::vector<std::string>& expected) const {
    for (const std::string& part : expected) {
      EXPECT_NE(out.find(part), std::string::npos) << part << "\nis not in\n" << out;
    }
  }
};

Outcome ksaml(const std::string& arguments, const std::string& program = BUILD_DIR "/bin/ksaml") {
  std::FILE* const pipe = popen((program + " " + arguments).c_str(), "r");
  std::string out;
  for (char chunk[4096]; const std::size_t length = std::fread(chunk, 1, sizeof chunk, pipe);) {
    out.append(chunk, length);
  }
  const int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out};
}

// One golden answer of each kind: NAME.xml, and what the tool says of it in NAME.json.
TEST(Ksaml, GoldenAnswers) {
  const std::pair<const char*, int> rows[] = {
      {"success", 0},        {"needs-ui", 0},           {"denied", 0},       {"logout", 0},
      {"two-assertions", 0}, {"default-namespaces", 0}, {"entitlements", 0}, {"expired", 1},
      {"not-a-response", 1}, {"no-conditions", 1},      {"invalid", 1},      {"no-xml", 1},
  };
  for (const auto& [name, status] : rows) {
    const bool withoutSchema = name == std::string("entitlements");
    const std::string options =
        withoutSchema ? "--no-schema --resource https://tv.example/ch/1 --resource none:2 " : "";
    const Outcome run = ksaml("read --json " + options + kGolden + name + ".xml 2>/dev/null");
    EXPECT_EQ(run.out, fuzz::contentOf(kGolden + name + ".json")) << name;
    EXPECT_EQ(run.status, status) << name;
  }
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
  ksaml("read --json /absent " + kSample + " 2>/dev/null").says({"\"accepted\":true"});
}

TEST(Ksaml, Base64FormValue) {
  const Outcome run = ksaml("read --json --base64 - < " + kGolden + "success.base64");
  EXPECT_EQ(run.status, 0);
  std::string expected = fuzz::contentOf(kGolden + "success.json");
  expected.replace(expected.find("success.xml"), 11, "-");
  EXPECT_EQ(run.out, expected);
}

TEST(Ksaml, SaysWhyForPeople) {
  const std::pair<std::string, std::vector<std::string>> rows[] = {
      {kSample, {"answer.xml: accepted\n", "mara.lindqvist", "proceed", "55802, 55804"}},
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
      {kGolden + "invalid.xml",
       {"not found valid against the SAML 2.0 protocol schema", "ERROR 1845", "line 3"}},
      {kGolden + "not-a-response.xml", {"its root element is neither Response nor LogoutResponse"}},
      {kGolden + "no-xml.xml", {"there is no XML in it", "XMLWrapperErrorDomain 200"}},
      {"--no-schema " + kGolden + "odd.xml",
       {"\"2030-01-01T00:00:00.5Z\" (does not parse: read as absent)", "not yet valid, for ",
        "[31mred\\u009b"}},
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
                                 ""};
  for (const std::string& arguments : refused) {
    const Outcome run = ksaml("request " + arguments + " 2>/dev/null");
    EXPECT_EQ(run.status, 2) << arguments;
    EXPECT_EQ(run.out, "") << arguments;
  }
}

// A copy without its bundle reads without validation, and says so; a moved tree keeps its bundle.
TEST(Ksaml, MovedTrees) {
  const fs::path moved = fs::path(::testing::TempDir()) / "kestrelink-moved";
  fs::remove_all(moved);
  fs::create_directories(moved / "lib");
  fs::create_directories(moved / "bin");
  fs::copy(BUILD_DIR "/bin/ksaml", moved / "bin/ksaml");
  for (const auto& file : fs::directory_iterator(BUILD_DIR "/lib")) {
    if (file.path().filename().string().find(".so") != std::string::npos) {
      fs::copy(file.path(), moved / "lib" / file.path().filename(),
               fs::copy_options::copy_symlinks);
    }
  }
  const std::string program = (moved / "bin/ksaml").string();
  const Outcome bare = ksaml("read " + kSample, program);
  bare.says({"not validated: no schema"});
  EXPECT_EQ(bare.status, 0);
  fs::copy(BUILD_DIR "/share", moved / "share", fs::copy_options::recursive);
  const Outcome whole = ksaml("read " + kSample, program);
  EXPECT_EQ(whole.out.find("not validated"), std::string::npos);
  EXPECT_EQ(ksaml("read " + kGolden + "invalid.xml 2>/dev/null", program).status, 1);
  fs::remove_all(moved);
}

}  // namespace
