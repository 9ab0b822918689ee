// ksaml, the command-line tool: shows what the library reads in a message, and writes requests.

#include <cstdio>
#include <cstdlib>
#include <new>

#include <CLI/CLI.hpp>

#include "MetadataCommand.h"
#include "ReadCommand.h"
#include "RequestCommand.h"
#include "Table.h"

namespace {

constexpr const char* kOutOfMemory = "ksaml: out of memory\n";

[[noreturn]] void endWithoutMemory() {
  std::fflush(stdout);
  std::fputs(kOutOfMemory, stderr);
  std::_Exit(2);
}

// The JSON library allocates in destructors, and CLI11 before `main`: std::bad_alloc would abort
// the process there. So this is called before other static objects are made.
[[gnu::constructor(101)]] void endWhenOutOfMemory() { std::set_new_handler(&endWithoutMemory); }

int run(int argc, char** argv) {
  CLI::App app(
      "Reads, verifies and makes the SAML 2.0 messages that sign a television subscriber in.",
      "ksaml");
  app.set_version_flag("--version", "ksaml " KSAML_VERSION);
  app.require_subcommand(1);
  app.failure_message([](const CLI::App* /*command*/, const CLI::Error& error) {
    return ksaml::printable(error.what()) + "\nRun with --help for more information.\n";
  });

  ksaml::ReadCommand read(app);
  ksaml::RequestCommand request(app);
  ksaml::MetadataCommand metadata(app);

  try {
    app.parse(argc, argv);
    if (read.isChosen()) return read.run();
    return metadata.isChosen() ? metadata.run() : request.run();
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::bad_alloc&) {  // of the library, for libxml2
    std::fputs(kOutOfMemory, stderr);
    return 2;
  }
}
