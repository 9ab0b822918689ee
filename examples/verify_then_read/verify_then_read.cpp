// A client's whole way from a provider's response to a subscriber: verify, keep only what was
// signed, read that, compare it to what was asked for.

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "SignIn.h"
#include "VerifiedResponse.h"

namespace {

using verify_then_read::Outcome;
using verify_then_read::Verdict;

// Not through libxml2, which finds no files once the library has been used.
std::optional<std::string> content(const std::string& path) {
  std::ifstream file;
  if (path != "-") file.open(path, std::ios::binary);
  std::istream& input = path == "-" ? std::cin : file;
  std::string bytes;
  for (char chunk[4096]; input.read(chunk, sizeof chunk), input.gcount() > 0;) {
    bytes.append(chunk, static_cast<std::size_t>(input.gcount()));
  }
  if (input.eof() && !input.bad()) return bytes;
  std::fprintf(stderr, "verify_then_read: cannot read %s\n", path.c_str());
  return std::nullopt;
}

struct Report {
  const char* line;
  int status;
};

Report reportOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::SignedIn:
      return {"signed in: ", 0};
    case Verdict::ShowSignInPage:
      return {"show the provider's sign-in page", 3};
    case Verdict::Denied:
      return {"denied: ", 4};
    case Verdict::LoggedOut:
      return {"logged out", 5};
    case Verdict::Refused:
      break;
  }
  return {"refused: ", 1};
}

int print(const Outcome& outcome) {
  const Report report = reportOf(outcome.verdict);
  std::string line = report.line + outcome.text;
  // A name may hold line feeds, and a script reads lines.
  std::replace_if(
      line.begin(), line.end(), [](unsigned char each) { return std::iscntrl(each) != 0; }, ' ');
  return std::puts(line.c_str()) < 0 || std::fflush(stdout) != 0 ? 2 : report.status;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Verifies a provider's response, then reads it.", "verify_then_read");
  app.footer(
      "Exit status: 0 signed in, 1 refused, 2 usage or unreadable file, 3 show the provider's\n"
      "sign-in page, 4 denied, 5 logged out.");
  verify_then_read::Expected expected;
  std::string certificatePath, responsePath;
  app.add_option("--audience", expected.audience, "Who every assertion has to be meant for");
  app.add_option("--issuer", expected.issuer, "Who has to have issued them");
  app.add_option("--recipient", expected.recipient, "Where they have to have been sent");
  app.add_option("--in-response-to", expected.inResponseTo, "ID of the request that was sent");
  app.add_option("CERTIFICATE", certificatePath, "The provider's certificate (PEM)")->required();
  app.add_option("RESPONSE", responsePath, "The response (XML); - is standard input")->required();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }

  const auto certificate = content(certificatePath);
  const auto response = certificate ? content(responsePath) : std::nullopt;
  if (!response) return 2;
  std::string reason;
  const auto trusted = verify_then_read::verifiedResponse(*response, *certificate, reason);
  return print(trusted ? verify_then_read::readVerified(*trusted, expected)
                       : Outcome{Verdict::Refused, reason});
}
