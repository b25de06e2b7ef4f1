#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace vesk::fuzz {

/// Ends the process, as a finding, unless the condition holds.
inline void require(bool condition) {
  if (!condition) std::abort();
}

/// A folder of this process's own, in memory where the machine has such a place.
class ScratchFolder {
 public:
  ScratchFolder() {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path memory = "/dev/shm";
    const fs::path parent =
        fs::is_directory(memory, error) ? memory : fs::temp_directory_path(error);
    std::string name = (parent / "vesk-fuzz-XXXXXX").string();
    require(::mkdtemp(name.data()) != nullptr);
    path_ = name;
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace vesk::fuzz
