#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace vesk::package {

/// A directory of a test's own, gone with its owner.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = std::filesystem::temp_directory_path() / "vesk-package-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory");
    path_ = pattern;
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  /// Writes a file and gives its path.
  std::filesystem::path put(std::string_view name, std::string_view text) const {
    auto file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
    return file;
  }

  std::string contents(std::string_view name) const {
    std::ifstream stream(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

 private:
  std::filesystem::path path_;
};

}  // namespace vesk::package
