#include "ReadCommand.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <CLI/CLI.hpp>

#include "InputFile.h"
#include "InputMessage.h"
#include "JsonReport.h"
#include "TextReport.h"

namespace ksaml {
namespace {

bool wantsColour() { return isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr; }

CLI::App& subcommandOf(CLI::App& app) {
  CLI::App& command =
      *app.add_subcommand("read", "Read a provider's response and show what it says");
  command.footer("Exit status: 0 all accepted, 1 some rejected, 2 usage or unreadable file.");
  return command;
}

// As verification needs it: the kind of message decides what was asked.
std::string rootOf(const Reading& reading) {
  return reading.response ? reading.response->documentElement()->tagName().value_or("") : "";
}

}  // namespace

ReadCommand::ReadCommand(CLI::App& app) : command_(subcommandOf(app)), verification_(command_) {
  command_.add_flag("--cached", options_.cached,
                    "Do not check the time window: for a response that was stored");
  command_.add_flag("--no-schema", options_.noSchema,
                    "Do not validate the message against the schema");
  command_.add_flag("--base64", base64_,
                    "The input is base64, as the form value that a browser posts");
  command_.add_option("--resource", options_.resources, "Show the decision for this URL")
      ->type_name("URL")
      ->expected(1)
      ->take_all();
  CLI::Option* const json =
      command_.add_flag("--json", json_, "One JSON object a line for each file");
  command_.add_flag("--xml", xml_, "Write the XML text of the messages, and do not check them")
      ->excludes(json);
  command_
      .add_option("FILE", files_,
                  "Messages: XML, alone or in a SOAP envelope, a posted form, a URL or base64; - "
                  "is standard "
                  "input")
      ->required();
}

bool ReadCommand::isChosen() const { return command_.parsed(); }

int ReadCommand::run() {
  if (verification_.isAsked() && !verification_.start()) return 2;
  kestrelink::SAMLParserController controller;
  int status = 0;
  for (const std::string& file : files_) status = std::max(status, read(controller, file));
  return finishedOutput() ? status : 2;
}

int ReadCommand::read(kestrelink::SAMLParserController& controller, const std::string& file) {
  const auto received = readInput(file);
  const auto message = received ? messageIn(*received, base64_, file) : std::nullopt;
  if (!message) return 2;
  if (xml_) {
    print(*message + "\n");
    return 0;
  }
  Reading reading = readMessage(controller, *message, options_);
  if (verification_.isAsked()) {
    believe(reading, verification_.resultOf(*received, rootOf(reading)));
  }
  reading.file = std::filesystem::path(file).filename().string();
  if (!json_ && !isFirst_) print("\n");
  isFirst_ = false;
  print(json_ ? jsonReport(reading, options_) + "\n"
              : textReport(reading, options_, wantsColour()));
  return reading.accepted ? 0 : 1;
}

void ReadCommand::print(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
}

}  // namespace ksaml
