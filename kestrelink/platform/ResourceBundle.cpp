#include "kestrelink/platform/ResourceBundle.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

#include "kestrelink/platform/NoDestructor.h"
#include "kestrelink/platform/Text.h"

namespace kestrelink {
namespace {

constexpr const char* kBundleIdentifier = "com.norvane.Kestrelink.SAMLFramework";

// POSIX calls throughout: the standard library's paths would be most of what a cold start loads.

struct Free {
  void operator()(char* text) const { std::free(text); }
};

// The file this code was loaded from: the shared library, or the program of a static build.
std::string loadedFile() {
  Dl_info information{};
  void* map = nullptr;
  const auto* here = reinterpret_cast<const void*>(&loadedFile);
  if (dladdr1(here, &information, &map, RTLD_DL_LINKMAP) == 0 || map == nullptr) return {};
  const char* name = static_cast<const link_map*>(map)->l_name;
  // The program itself has no name here, and what it was called by need not be a path.
  const bool isProgram = name == nullptr || *name == '\0';
  const std::unique_ptr<char, Free> file(::realpath(isProgram ? "/proc/self/exe" : name, nullptr));
  if (!file && errno == ENOMEM) throw std::bad_alloc();  // "there is none" is remembered
  return file ? file.get() : std::string();
}

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

bool isFolder(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// Two levels, because Debian keeps libraries one folder deeper (lib/x86_64-linux-gnu).
std::optional<ResourceBundle> locateBundle() {
  const std::string file = loadedFile();
  if (file.empty()) return std::nullopt;  // gone since it was loaded; never the current folder
  std::string prefix = folderOf(file);
  for (int level = 0; level < 2; ++level) {
    prefix = folderOf(prefix);
    std::string folder = prefix + "/share/" + kBundleIdentifier;
    if (isFolder(folder)) return ResourceBundle(std::move(folder));
  }
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
  // A resource that is there must not pass for one that is not: what is read once is remembered.
  const bool noRoom = errno == EMFILE || errno == ENFILE || errno == ENOMEM;
  if (file.get() < 0 && noRoom) throw std::bad_alloc();
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
  static const auto& bundle = noDestructor<std::optional<ResourceBundle>>(locateBundle());
  return bundle ? &*bundle : nullptr;
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
