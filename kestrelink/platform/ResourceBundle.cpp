#include "kestrelink/platform/ResourceBundle.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/platform/NoDestructor.h"
#include "kestrelink/platform/Text.h"

namespace kestrelink {
namespace {

constexpr const char* kBundleIdentifier = "com.norvane.Kestrelink.SAMLFramework";

// Uses POSIX calls only: std::filesystem would be most of what a new process has to load.

struct Free {
  void operator()(char* text) const { std::free(text); }
  void operator()(std::FILE* file) const { std::fclose(file); }
};

struct Line {
  Line() = default;
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;
  ~Line() { std::free(text); }
  char* text = nullptr;
  std::size_t size = 0;
};

// A file that cannot be opened for lack of descriptors or memory must not be treated as missing:
// the result is kept for the life of the process.
void throwIfExhausted() {
  if (errno == EMFILE || errno == ENFILE || errno == ENOMEM) throw std::bad_alloc();
}

// "" when there is no such file.
std::string absolutePath(const char* path) {
  const std::unique_ptr<char, Free> file(::realpath(path, nullptr));
  if (!file) throwIfExhausted();
  return file ? file.get() : std::string();
}

// The file that is mapped at the address, by its path in /proc/self/maps; "" when there is none.
std::string fileMappedAt(const void* address) {
  errno = 0;
  const std::unique_ptr<std::FILE, Free> maps(std::fopen("/proc/self/maps", "re"));
  Line line;
  while (maps && ::getline(&line.text, &line.size, maps.get()) > 0) {
    const std::string_view text(line.text);  // "first-last rwxp offset device inode   path\n"
    char* end = nullptr;
    const std::uintptr_t first = std::strtoul(line.text, &end, 16);
    const std::uintptr_t last = *end == '-' ? std::strtoul(end + 1, &end, 16) : 0;
    const auto here = reinterpret_cast<std::uintptr_t>(address);
    const std::size_t slash = text.find('/');
    if (here < first || here >= last || slash == std::string_view::npos) continue;
    return std::string(text.substr(slash, text.find('\n') - slash));
  }
  throwIfExhausted();
  return {};
}

// The file that this code was loaded from: the shared library, or the program or plugin
// with the static library.
std::string loadedFile() {
  Dl_info information{};
  void* map = nullptr;
  const auto* here = reinterpret_cast<const void*>(&loadedFile);
  const bool known = dladdr1(here, &information, &map, RTLD_DL_LINKMAP) != 0 && map != nullptr;
  const char* name = known ? static_cast<const link_map*>(map)->l_name : nullptr;
  // The name is empty for the program itself; argv[0] need not be a path. In a program without a
  // dynamic loader there is no name.
  if (name == nullptr || *name == '\0') return absolutePath("/proc/self/exe");
  if (*name == '/') return absolutePath(name);
  // The name is relative to the folder that was current when the library was loaded.
  return absolutePath(fileMappedAt(here).c_str());
}

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

bool isFolder(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// In the `share` beside the file, or beside one of the two folders it is in: Debian keeps libraries
// one folder deeper (lib/x86_64-linux-gnu). cmake/InstallLayout.cmake checks folders by the same
// rule.
std::optional<ResourceBundle> locateBundle() {
  const std::string file = loadedFile();
  std::string folder = file;
  for (int level = 0; level < 3 && !file.empty(); ++level) {  // never the current folder
    folder = folderOf(folder);
    std::string bundle = folder + "/share/" + kBundleIdentifier;
    if (isFolder(bundle)) return ResourceBundle(std::move(bundle));
  }
  logDiagnostic("Messages are read without validation: there is no folder share/" +
                std::string(kBundleIdentifier) + " beside " +
                (file.empty() ? "the library" : file) + " or up to two folders above it");
  return std::nullopt;
}

class FileDescriptor {
 public:
  explicit FileDescriptor(const std::string& path)
      : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

std::optional<std::string> readFile(const std::string& path) {
  const FileDescriptor file(path);
  if (file.get() < 0) throwIfExhausted();
  struct stat status {};
  if (file.get() < 0 || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t length = 0;
  while (length < bytes.size()) {
    const ssize_t count = ::read(file.get(), bytes.data() + length, bytes.size() - length);
    if (count <= 0) return std::nullopt;
    length += static_cast<std::size_t>(count);
  }
  return bytes;
}

}  // namespace

ResourceBundle::ResourceBundle(std::string folder) : folder_(std::move(folder)) {}

const ResourceBundle* ResourceBundle::ofLibrary() {
  static const auto* const bundle = &noDestructor<std::optional<ResourceBundle>>(locateBundle());
  return *bundle ? &**bundle : nullptr;
}

std::optional<std::string> ResourceBundle::bytes(std::string_view name,
                                                 std::optional<std::string_view> extension) const {
  std::string fileName(name);
  if (extension) fileName.append(".").append(*extension);
  // A name with a "/" could leave the folder, one with a NUL would be cut off.
  if (fileName.find_first_of(std::string_view("/\0", 2)) != std::string::npos) return std::nullopt;
  return readFile(folder_ + "/" + fileName);
}

std::optional<std::string> ResourceBundle::text(std::string_view name,
                                                std::optional<std::string_view> extension) const {
  std::optional<std::string> text = bytes(name, extension);
  if (text && !isUtf8(*text)) return std::nullopt;
  return text;
}

}  // namespace kestrelink
