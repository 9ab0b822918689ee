#include "tests/support/Attack.h"

#include <iconv.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>

namespace fuzz {
namespace {

// Where the group ends that the text begins with.
std::size_t endOfGroup(std::string_view text) {
  int depth = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '}' && --depth == 0) return at;
    if (text.substr(at).starts_with("@{")) ++depth;
  }
  return text.size();
}

void expand(std::string_view text, int scale, const std::string& number, std::string& result) {
  const char* const marks = number.empty() ? "@" : "@#";
  for (std::size_t at; (at = text.find_first_of(marks)) != std::string_view::npos;) {
    result += text.substr(0, at);
    text.remove_prefix(at);
    std::size_t length = text.starts_with("##") ? 2 : 1;
    if (text.starts_with("@{")) {
      const bool fixed = text.starts_with("@{=");
      const std::size_t bar = text.find('|'), first = fixed ? 3 : 2, end = endOfGroup(text);
      const int times = std::stoi(std::string(text.substr(first, bar - first)));
      for (int time = 0; time < times * (fixed ? 1 : scale); ++time) {
        expand(text.substr(bar + 1, end - bar - 1), scale, std::to_string(time), result);
      }
      length = std::min(end + 1, text.size());
    } else {
      result += text.starts_with('@') ? "@" : length == 2 ? "#" : number;
    }
    text.remove_prefix(length);
  }
  result += text;
}

std::string inEncoding(const std::string& name, std::string text) {
  const iconv_t conversion = iconv_open(name.c_str(), "UTF-8");
  std::string result(4 * text.size() + 8, '\0');
  char *from = text.data(), *to = result.data();
  std::size_t left = text.size(), space = result.size();
  if (iconv(conversion, &from, &left, &to, &space) != 0) space = result.size();
  iconv_close(conversion);
  result.resize(result.size() - space);
  return result;
}

}  // namespace

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string attack(const std::filesystem::path& path, int scale) {
  const std::string text = contentOf(path);
  return path.extension() == ".recipe" ? expanded(text, scale) : text;
}

std::string expanded(std::string_view recipe, int scale) {
  std::smatch directive;
  const std::string first(recipe.substr(0, recipe.find('\n')));
  const bool isDirected = std::regex_match(first, directive, std::regex("@(raw|iconv) ?(.*)"));
  std::string text;
  if (isDirected) recipe.remove_prefix(std::min(first.size() + 1, recipe.size()));
  expand(recipe, scale, "", text);
  return isDirected && directive[1] == "iconv" ? inEncoding(directive[2], text) : text;
}

Cost costOf(const std::function<void()>& work, rlim_t mostSeconds, rlim_t mostBytes) {
  const pid_t child = fork();
  if (child == 0) {
    const rlimit time{mostSeconds, mostSeconds}, memory{mostBytes, mostBytes};
    setrlimit(RLIMIT_CPU, &time);
    setrlimit(RLIMIT_AS, &memory);
    alarm(300);
    work();
    _exit(0);
  }
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  return {status == 0, seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_maxrss};
}

long peakOf(const std::function<void()>& work) {
  const Cost cost = costOf(work);
  return cost.ended ? cost.kilobytes : -1;
}

}  // namespace fuzz
