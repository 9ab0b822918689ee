#include "ReadCommand.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "Bindings.h"
#include "InputFile.h"
#include "JsonReport.h"
#include "TextReport.h"

namespace ksaml {
namespace {

std::optional<std::string> textOf(const std::string& file, bool base64) {
  const std::optional<std::string> text = readInput(file);
  return text ? messageIn(*text, base64, file) : std::nullopt;
}

bool wantsColour() { return isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr; }

}  // namespace

int ReadCommand::run() const {
  kestrelink::SAMLParserController controller;
  int status = 0;
  bool first = true;
  for (const std::string& file : files) {
    const std::optional<std::string> text = textOf(file, base64);
    if (!text) {
      status = 2;
      continue;
    }
    Reading reading = readMessage(controller, *text, options);
    reading.file = std::filesystem::path(file).filename().string();
    if (!reading.accepted) status = std::max(status, 1);

    if (!json && !first) std::fputc('\n', stdout);
    first = false;
    const std::string report =
        json ? jsonReport(reading, options) + "\n" : textReport(reading, options, wantsColour());
    std::fwrite(report.data(), 1, report.size(), stdout);
  }
  return finishedOutput() ? status : 2;
}

}  // namespace ksaml
