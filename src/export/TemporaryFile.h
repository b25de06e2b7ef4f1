#pragma once

#include <filesystem>
#include <string_view>

namespace vesk::exporting {

/// A name for a file that is removed again with the object.
class TemporaryFile {
 public:
  /// A name in `folder` that no other file has: `prefix`, a new UUID in upper case, `extension`.
  TemporaryFile(const std::filesystem::path& folder, std::string_view prefix,
                std::string_view extension);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  /// Leaves the file where it is.
  void keep() { isKept_ = true; }

 private:
  std::filesystem::path path_;
  bool isKept_ = false;
};

}  // namespace vesk::exporting
