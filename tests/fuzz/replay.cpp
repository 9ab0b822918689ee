// Runs a target over files, without a fuzzing engine: replay TARGET [--damaged|--scale=N]
// FILE_OR_FOLDER... With --damaged each file is also cut off at 200 places and has a bit flipped at
// 200 places; which they are depends on its size alone. With a scale the repetitions of recipes are
// multiplied.
#include <cstdio>
#include <filesystem>
#include <map>
#include <random>
#include <string>

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
    {"requests", fuzz::requests}};

int runDamaged(Target target, const std::string& text) {
  constexpr int kTimes = 200;
  if (text.empty()) return 0;
  std::mt19937 random(static_cast<std::mt19937::result_type>(text.size()));
  for (int time = 0; time < kTimes; ++time) {
    target(text.substr(0, random() % text.size()));
    std::string flipped = text;
    char& byte = flipped[random() % text.size()];
    byte = static_cast<char>(byte ^ (1 << (random() % 8)));
    target(flipped);
  }
  return 2 * kTimes;
}

int run(Target target, const std::filesystem::path& path, bool damaged, int scale) {
  int count = 0;
  if (std::filesystem::is_directory(path)) {
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
      count += run(target, entry.path(), damaged, scale);
    }
    return count;
  }
  std::fprintf(stderr, "%s\n", path.c_str());
  if (!std::filesystem::is_regular_file(path)) return count;
  const std::string text = fuzz::attack(path, scale);
  target(text);
  return 1 + (damaged ? runDamaged(target, text) : 0);
}

}  // namespace

int main(int count, char** arguments) {
  const auto target = kTargets.find(count > 1 ? arguments[1] : "");
  if (target == kTargets.end()) {
    std::fprintf(stderr, "replay TARGET [--damaged|--scale=N] FILE_OR_FOLDER...; the targets:\n");
    for (const auto& [name, function] : kTargets) std::fprintf(stderr, "  %s\n", name.c_str());
    return 2;
  }
  fuzz::start();
  int replayed = 0, scale = 1;
  bool damaged = false;
  for (int index = 2; index < count; ++index) {
    const std::string argument = arguments[index];
    if (argument == "--damaged") {
      damaged = true;
    } else if (argument.starts_with("--scale=")) {
      scale = std::stoi(argument.substr(argument.find('=') + 1));
    } else {
      replayed += run(target->second, argument, damaged, scale);
    }
  }
  std::printf("%s: %d inputs\n", target->first.c_str(), replayed);
  return replayed > 0 ? 0 : 1;
}
