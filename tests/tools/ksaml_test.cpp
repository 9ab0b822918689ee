// The command-line tool, run as a program.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <regex>

#include "tests/support/Support.h"

namespace {

namespace fs = std::filesystem;

struct Outcome {
  int status;
  std::string out;
};

// In the folder of the golden files, with the tool in the path. Paths are variables, because they
// may have any character.
Outcome shell(const std::string& command) {
  ::setenv("GOLDEN", SOURCE_DIR "/tests/golden", 1);
  ::setenv("PROGRAMS", PROGRAMS, 1);
  const std::string line = "cd \"$GOLDEN\" || exit; PATH=$PROGRAMS:$PATH; " + command;
  std::FILE* const pipe = popen(line.c_str(), "r");
  std::string out;
  for (char chunk[4096]; const std::size_t length = std::fread(chunk, 1, sizeof chunk, pipe);) {
    out.append(chunk, length);
  }
  const int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out};
}

TEST(Ksaml, GoldenTranscript) {
  const std::regex varying(
      "_?[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}|[0-9]+ (year|day)s? [0-9]+ \\w+");
  const std::regex varyingAfter("(IssueInstant=\"|PHNhbWxw|SAMLRequest=)[^\"#\\s]*");
  kestrelink::testing::expectCases("tests/golden/cases/ksaml.txt", [&](const std::string& line) {
    const Outcome run = shell("{ " + line + "; } 2>&1");
    const std::string out = std::regex_replace(run.out, varying, "*");
    return std::regex_replace(out, varyingAfter, "$1*") + "exit " + std::to_string(run.status);
  });
}

// A message reads the same whatever carried it.
TEST(Ksaml, Carriers) {
  const std::string posted = "b=$(sed 's/+/%2B/g;s/=/%3d/g' success.base64); ";
  const std::string rows[] = {
      "cat success.base64",
      "fold -w 76 success.base64",
      "gzip -9nc success.xml | tail -c +11 | head -c -8 | base64",
      posted + "echo \"SAMLResponse=$b&RelayState=x\"",
      posted + "echo \"https://tv.example/acs?RelayState=x&SAMLResponse=$b#top\"",
      "echo \"<?xml version='1.0'?><!-- <e> --><s:Envelope "
      "xmlns:s='http://schemas.xmlsoap.org/soap/envelope/'><s:Header><x/></s:Header><s:Body>"
      "$(cat success.xml)</s:Body></s:Envelope>\"",
  };
  const std::string expected = shell("ksaml read --json - <success.xml").out;
  for (const std::string& carrier : rows) {
    EXPECT_EQ(shell("(" + carrier + ") | ksaml read --json -").out, expected) << carrier;
    for (const std::string kind : {"authn --issuer I", "authz --channel C --resource R"}) {
      const std::string request = "ksaml request " + kind + " --subject-from - 2>&1";
      const Outcome run = shell("(" + carrier + ") | " + request);
      EXPECT_NE(run.out.find("<saml:Subject "), std::string::npos) << carrier << run.out;
    }
  }
  EXPECT_EQ(shell("ksaml read --json --base64 - <success.base64").out, expected);
}

// A copy without its bundle reads without validation, and says so; a moved tree keeps its bundle.
TEST(Ksaml, MovedTrees) {
  const fs::path moved = ::testing::TempDir() + "kestrelink moved " + std::to_string(::getpid());
  ::setenv("MOVED", moved.c_str(), 1);
  const auto read = [&](const std::string& message) {
    const Outcome run = shell(EMULATOR "\"$MOVED\"/bin/ksaml read 2>/dev/null " + message);
    const bool isBare = run.out.find("not validated: no schema") != std::string::npos;
    return std::to_string(run.status) + (isBare ? " not validated" : " validated");
  };
  fs::create_directories(moved / "bin");
  fs::copy(BUILD_DIR "/bin/ksaml", moved / "bin");
  fs::copy(BUILD_DIR "/lib", moved / "lib",
           fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  EXPECT_EQ(read("success.xml"), "0 not validated");
  // A time of the files that 32 bits cannot hold.
  fs::copy(BUILD_DIR "/share", moved / "share", fs::copy_options::recursive);
  shell("touch -d 2040-01-01 \"$MOVED\"/share/*/*");
  EXPECT_EQ(read("success.xml"), "0 validated");
  EXPECT_EQ(read("invalid.xml"), "1 validated");
  fs::remove_all(moved);
}

}  // namespace
