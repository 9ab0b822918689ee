// The library's own resource bundle: a folder of files that belongs to the library.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrelink {

/// A folder of resources, each found by name and extension. A name never leaves the folder.
class ResourceBundle {
 public:
  explicit ResourceBundle(std::string folder);

  /// The bundle "com.norvane.Kestrelink.SAMLFramework": that folder in the `share` beside the file
  /// that the library was loaded from (with the static library: the program or plugin), or beside
  /// one of the two folders around it. Looked up once, on first use, from any thread; null when
  /// there is none, and then the diagnostic log says so. Throws `std::bad_alloc` like `bytes`, and
  /// is then looked up again.
  static const ResourceBundle* ofLibrary();

  /// The resource's bytes; `std::nullopt` when there is no such regular file or it cannot be read,
  /// with the reason. Throws `std::bad_alloc` also when no file descriptor is left, when
  /// the file cannot be read at this moment (EAGAIN), and when its length changes meanwhile.
  std::optional<std::string> bytes(std::string_view name, std::optional<std::string_view> extension,
                                   std::string* reason = nullptr) const;

  /// The resource as text; `std::nullopt` also when it is not UTF-8.
  std::optional<std::string> text(std::string_view name,
                                  std::optional<std::string_view> extension) const;

 private:
  std::string folder_;
};

}  // namespace kestrelink
