#include "kestrelink/platform/ResourceBundle.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <system_error>
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
};

std::string textOfError() { return std::generic_category().message(errno); }

// The result is kept for the life of the process. So an error that passes must not make a file
// count as missing.
void throwIfItPasses() {
  for (const int passing : {ENOMEM, EMFILE, ENFILE, EAGAIN}) {
    if (errno == passing) throw std::bad_alloc();
  }
}

// Whether the system call succeeds. It is repeated when a signal interrupted it.
template <class Call>
bool succeeds(Call call) {
  bool done = call();
  while (!done && errno == EINTR) done = call();
  if (!done) throwIfItPasses();
  return done;
}

class FileDescriptor {
 public:
  FileDescriptor() = default;
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }

  bool open(const char* path) {
    return succeeds([&] {
      descriptor_ = ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
      return descriptor_ >= 0;
    });
  }
  int get() const { return descriptor_; }

 private:
  int descriptor_ = -1;
};

// All bytes up to the end of the file; `size` is how many are expected.
std::optional<std::string> readToEnd(const FileDescriptor& file, std::size_t size) {
  std::string bytes(size + 1, '\0');
  std::size_t length = 0;
  ssize_t count = 0;
  const auto read = [&] {
    count = ::read(file.get(), bytes.data() + length, bytes.size() - length);
    return count >= 0;
  };
  while (succeeds(read) && count > 0) {
    length += static_cast<std::size_t>(count);
    if (length == bytes.size()) bytes.resize(2 * length);
  }
  if (count < 0) return std::nullopt;
  bytes.resize(length);
  return bytes;
}

// "" when there is no such file, with the reason.
std::string absolutePath(const char* path, std::string& reason) {
  std::unique_ptr<char, Free> file;
  const auto resolve = [&] {
    file.reset(::realpath(path, nullptr));
    return file != nullptr;
  };
  if (succeeds(resolve)) return file.get();
  reason = textOfError();
  return {};
}

// The path in a line of /proc/self/maps, "first-last rwxp offset device inode   path", if the
// address is between the two; "" when it is not.
std::string_view pathIfMapped(std::uintptr_t address, std::string_view line) {
  char* end = nullptr;
  const std::uintptr_t first = std::strtoul(line.data(), &end, 16);
  const std::uintptr_t last = *end == '-' ? std::strtoul(end + 1, &end, 16) : 0;
  const std::size_t slash = line.find('/');
  const bool isMapped = first <= address && address < last && slash != std::string_view::npos;
  return isMapped ? line.substr(slash) : std::string_view();
}

// The file that is mapped at the address, by its path in /proc/self/maps; "" when there is none.
std::string fileMappedAt(const void* address, std::string& reason) {
  FileDescriptor file;
  const auto maps = file.open("/proc/self/maps") ? readToEnd(file, 0) : std::nullopt;
  if (!maps) reason = textOfError();
  std::string_view rest = maps ? *maps : std::string_view();
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    const auto path = pathIfMapped(reinterpret_cast<std::uintptr_t>(address), line);
    if (!path.empty()) return std::string(path);
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
  }
  return {};
}

// The file that this code was loaded from: the shared library, or the program or plugin
// with the static library.
std::string loadedFile(std::string& reason) {
  Dl_info information{};
  void* map = nullptr;
  const auto* here = reinterpret_cast<const void*>(&loadedFile);
  const bool known = dladdr1(here, &information, &map, RTLD_DL_LINKMAP) != 0 && map != nullptr;
  const char* name = known ? static_cast<const link_map*>(map)->l_name : nullptr;
  // The name is empty for the program itself; argv[0] need not be a path. In a program without a
  // dynamic loader there is no name.
  if (name == nullptr || *name == '\0') return absolutePath("/proc/self/exe", reason);
  if (*name == '/') return absolutePath(name, reason);
  // The name is relative to the folder that was current when the library was loaded.
  const std::string mapped = fileMappedAt(here, reason);
  return mapped.empty() ? mapped : absolutePath(mapped.c_str(), reason);
}

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

// A folder that cannot be looked at counts as missing, with the reason.
bool isFolder(const std::string& path, std::string& reason) {
  struct stat status {};
  if (succeeds([&] { return ::stat(path.c_str(), &status) == 0; })) return S_ISDIR(status.st_mode);
  if (errno != ENOENT) reason = textOfError();
  return false;
}

// In the `share` beside the file, or beside one of the two folders it is in: Debian keeps libraries
// one folder deeper (lib/x86_64-linux-gnu). cmake/InstallLayout.cmake checks folders by the same
// rule.
std::optional<ResourceBundle> locateBundle() {
  std::string reason;
  const std::string file = loadedFile(reason);
  std::string folder = file;
  for (int level = 0; level < 3 && !file.empty(); ++level) {  // never the current folder
    folder = folderOf(folder);
    std::string bundle = folder + "/share/" + kBundleIdentifier;
    if (isFolder(bundle, reason)) return ResourceBundle(std::move(bundle));
  }
  logDiagnostic("Messages are read without validation: there is no folder share/" +
                std::string(kBundleIdentifier) + " beside " +
                (file.empty() ? "the library" : file) + " or up to two folders above it" +
                (reason.empty() ? "" : " (" + reason + ")"));
  return std::nullopt;
}

std::optional<std::string> readFile(const std::string& path, std::string& reason) {
  FileDescriptor file;
  struct stat status {};
  std::optional<std::string> bytes;
  if (file.open(path.c_str()) && succeeds([&] { return ::fstat(file.get(), &status) == 0; })) {
    if (!S_ISREG(status.st_mode)) {
      reason = "not a regular file";
      return std::nullopt;
    }
    bytes = readToEnd(file, static_cast<std::size_t>(status.st_size));
  }
  if (!bytes) {
    reason = textOfError();
  } else if (bytes->size() != static_cast<std::size_t>(status.st_size)) {
    throw std::bad_alloc();  // it is being written, which passes
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
                                                 std::optional<std::string_view> extension,
                                                 std::string* reason) const {
  std::string fileName(name);
  if (extension) fileName.append(".").append(*extension);
  // A name with a "/" could leave the folder, one with a NUL would be cut off.
  if (fileName.find_first_of(std::string_view("/\0", 2)) != std::string::npos) return std::nullopt;
  const std::string path = folder_ + "/" + fileName;
  std::string failure;
  std::optional<std::string> bytes = readFile(path, failure);
  if (!bytes && reason != nullptr) *reason = path + " cannot be read (" + failure + ")";
  return bytes;
}

std::optional<std::string> ResourceBundle::text(std::string_view name,
                                                std::optional<std::string_view> extension) const {
  std::optional<std::string> text = bytes(name, extension);
  if (text && !isUtf8(*text)) return std::nullopt;
  return text;
}

}  // namespace kestrelink
