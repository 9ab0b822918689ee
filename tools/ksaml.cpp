// ksaml, the command-line tool: shows what the library reads in a message, and writes requests.

#include <cstdio>
#include <cstdlib>
#include <new>

#include <CLI/CLI.hpp>

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
      "Reads and makes the SAML 2.0 messages that sign a television subscriber in. Verifies no "
      "signature.",
      "ksaml");
  app.set_version_flag("--version", "ksaml " KSAML_VERSION);
  app.require_subcommand(1);
  app.failure_message([](const CLI::App* /*command*/, const CLI::Error& error) {
    return ksaml::printable(error.what()) + "\nRun with --help for more information.\n";
  });

  ksaml::ReadCommand read;
  CLI::App* const readCommand =
      app.add_subcommand("read", "Read a provider's response and show what it says");
  readCommand->footer("Exit status: 0 all accepted, 1 some rejected, 2 usage or unreadable file.");
  readCommand->add_flag("--cached", read.options.cached,
                        "Do not check the time window: for a response that was stored");
  readCommand->add_flag("--no-schema", read.options.noSchema,
                        "Do not validate the message against the schema");
  readCommand->add_flag("--base64", read.base64,
                        "The input is base64, as the form value that a browser posts");
  readCommand->add_option("--resource", read.options.resources, "Show the decision for this URL")
      ->type_name("URL")
      ->expected(1)
      ->take_all();
  readCommand->add_flag("--json", read.json, "One JSON object a line for each file");
  readCommand
      ->add_option("FILE", read.files,
                   "Messages: XML, alone or in a SOAP envelope, a posted form, a URL or base64; - "
                   "is standard "
                   "input")
      ->required();

  ksaml::RequestCommand request(app);

  try {
    app.parse(argc, argv);
    return readCommand->parsed() ? read.run() : request.run();
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
