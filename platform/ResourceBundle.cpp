#include "kestrelink/platform/ResourceBundle.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <new>
#include <system_error>
#include <utility>

#include "kestrelink/platform/Immortal.h"
#include "kestrelink/platform/Text.h"

namespace kestrelink {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kBundleIdentifier = "com.norvane.Kestrelink.SAMLFramework";

// The file this code was loaded from: the shared library, or the program of a static build.
fs::path loadedFile() {
  Dl_info information{};
  void* map = nullptr;
  const auto* here = reinterpret_cast<const void*>(&loadedFile);
  if (dladdr1(here, &information, &map, RTLD_DL_LINKMAP) == 0 || map == nullptr) return {};
  const char* name = static_cast<const link_map*>(map)->l_name;
  // The program itself has no name here, and what it was called by need not be a path.
  const bool isProgram = name == nullptr || *name == '\0';
  std::error_code failure;
  fs::path file = fs::canonical(isProgram ? "/proc/self/exe" : name, failure);
  // To be asked again: "there is no bundle" is remembered.
  if (failure == std::errc::not_enough_memory) throw std::bad_alloc();
  return failure ? fs::path() : file;
}

// Two levels, because Debian keeps libraries one folder deeper (lib/x86_64-linux-gnu).
std::optional<ResourceBundle> locateBundle() {
  const fs::path file = loadedFile();
  if (file.empty()) return std::nullopt;  // gone since it was loaded; never the current folder
  const fs::path folderOfCode = file.parent_path();
  for (const fs::path& prefix :
       {folderOfCode.parent_path(), folderOfCode.parent_path().parent_path()}) {
    std::error_code failure;
    fs::path folder = prefix / "share" / kBundleIdentifier;
    if (fs::is_directory(folder, failure)) return ResourceBundle(std::move(folder));
  }
  return std::nullopt;
}

class FileDescriptor {
 public:
  explicit FileDescriptor(const fs::path& path)
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

std::optional<std::string> readFile(const fs::path& path) {
  const FileDescriptor file(path);
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

ResourceBundle::ResourceBundle(fs::path folder) : folder_(std::move(folder)) {}

const ResourceBundle* ResourceBundle::ofLibrary() {
  static const auto& bundle = immortal<std::optional<ResourceBundle>>(locateBundle());
  return bundle ? &*bundle : nullptr;
}

std::optional<std::string> ResourceBundle::bytes(std::string_view name,
                                                 std::optional<std::string_view> extension) const {
  std::string fileName(name);
  if (extension) fileName.append(".").append(*extension);
  // A name with a "/" could leave the folder, one with a NUL would be cut off.
  if (fileName.find_first_of(std::string_view("/\0", 2)) != std::string::npos) return std::nullopt;
  return readFile(folder_ / fileName);
}

std::optional<std::string> ResourceBundle::text(std::string_view name,
                                                std::optional<std::string_view> extension) const {
  std::optional<std::string> text = bytes(name, extension);
  if (text && !isUtf8(*text)) return std::nullopt;
  return text;
}

}  // namespace kestrelink
