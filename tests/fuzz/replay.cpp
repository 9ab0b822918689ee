// Runs a target over files, without a fuzzing engine: replay TARGET [--damaged|--scale=N]
// FILE_OR_FOLDER... With --damaged each file is also cut off at 200 places and has a bit flipped at
// 200 places; which they are depends on its size alone. With a scale the repetitions of recipes are
// multiplied.
#include <cstdio>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "tests/fuzz/Targets.h"
#include "tests/support/Attack.h"

namespace {

using Target = void (*)(std::string_view);

const std::map<std::string, Target> kTargets = {
    {"responseWithSchema", fuzz::responseWithSchema},
    {"responseWithoutSchema", fuzz::responseWithoutSchema},
    {"documentAndXpath", fuzz::documentAndXpath},
    {"roundTrip", fuzz::roundTrip},
    {"everyAccessor", fuzz::everyAccessor},
#ifdef KESTRELINK_SIGNIN
    {"signIn", fuzz::signIn},
#endif
    {"requests", fuzz::requests}};

struct Run {
  Target target;
  bool damaged = false;
  int scale = 1, inputs = 0;

  void give(const std::string& text) {
    target(text);
    ++inputs;
  }

  void giveDamaged(const std::string& text) {
    std::mt19937 random(static_cast<std::mt19937::result_type>(text.size()));
    for (int time = 0; time < 200 && !text.empty(); ++time) {
      give(text.substr(0, random() % text.size()));
      std::string flipped = text;
      flipped[random() % text.size()] ^= static_cast<char>(1 << (random() % 8));
      give(flipped);
    }
  }

  void operator()(const std::filesystem::path& path) {
    if (std::filesystem::is_directory(path)) {
      for (const auto& entry : std::filesystem::directory_iterator(path)) (*this)(entry.path());
    } else if (std::filesystem::is_regular_file(path)) {
      std::fprintf(stderr, "%s\n", path.c_str());
      const std::string text = fuzz::attack(path, scale);
      give(text);
      if (damaged) giveDamaged(text);
    }
  }
};

}  // namespace

int main(int count, char** arguments) {
  const auto target = kTargets.find(count > 1 ? arguments[1] : "");
  if (target == kTargets.end()) {
    std::fprintf(stderr, "replay TARGET [--damaged|--scale=N] FILE_OR_FOLDER...; the targets:\n");
    for (const auto& [name, function] : kTargets) std::fprintf(stderr, "  %s\n", name.c_str());
    return 2;
  }
  fuzz::start();
  Run run{target->second};
  for (const std::string argument : std::vector(arguments + 2, arguments + count)) {
    if (argument == "--damaged") {
      run.damaged = true;
    } else if (argument.starts_with("--scale=")) {
      run.scale = std::stoi(argument.substr(argument.find('=') + 1));
    } else {
      run(argument);
    }
  }
  std::printf("%s: %d inputs\n", target->first.c_str(), run.inputs);
  return run.inputs > 0 ? 0 : 1;
}
