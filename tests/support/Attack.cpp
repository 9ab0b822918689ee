#include "tests/support/Attack.h"

#include <iconv.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <regex>

namespace fuzz {
namespace {

std::string expanded(std::string_view text, int scale) {
  std::string result;
  for (std::size_t at = text.find("@{"); at != std::string_view::npos; at = text.find("@{")) {
    const std::size_t bar = text.find('|', at), end = text.find('}', bar);
    const std::string_view piece = text.substr(bar + 1, end - bar - 1);
    const std::size_t mark = piece.find('#');
    result += text.substr(0, at);
    const int times = scale * std::stoi(std::string(text.substr(at + 2, bar)));
    for (int time = 0; time < times; ++time) {
      result += piece.substr(0, mark);
      if (mark == std::string_view::npos) continue;
      result.append(std::to_string(time)).append(piece.substr(mark + 1));
    }
    text.remove_prefix(end + 1);
  }
  return result.append(text);
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
  std::string text = contentOf(path);
  if (path.extension() != ".recipe") return text;
  std::smatch directive;
  const std::string first = text.substr(0, text.find('\n'));
  if (!std::regex_match(first, directive, std::regex("@(raw|iconv) ?(.*)")))
    return expanded(text, scale);
  text = expanded(std::string_view(text).substr(first.size() + 1), scale);
  return directive[1] == "raw" ? text : inEncoding(directive[2], text);
}

long peakOf(const std::function<void()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(300);
    work();
    _exit(0);
  }
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? usage.ru_maxrss : -1;
}

}  // namespace fuzz
