#include "InputFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "Table.h"

namespace ksaml {

std::optional<std::string> readInput(const std::string& path) {
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Close> opened;
  if (path != "-") opened.reset(std::fopen(path.c_str(), "rbe"));
  std::FILE* const file = path == "-" ? stdin : opened.get();

  std::string bytes;
  bool failed = file == nullptr;
  while (!failed) {
    char chunk[65536];
    const std::size_t length = std::fread(chunk, 1, sizeof chunk, file);
    bytes.append(chunk, length);
    failed = std::ferror(file) != 0;
    if (length < sizeof chunk) break;
  }
  if (!failed) return bytes;
  if (errno == ENOMEM) throw std::bad_alloc();
  const char* const reason = std::strerror(errno);
  std::fprintf(stderr, "ksaml: cannot read %s: %s\n", printable(path).c_str(), reason);
  return std::nullopt;
}

bool finishedOutput() {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return true;
  std::fprintf(stderr, "ksaml: cannot write: %s\n", std::strerror(errno));
  return false;
}

}  // namespace ksaml
