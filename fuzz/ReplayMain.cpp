// Feeds every file of the given directories to a fuzz target, for builds without a fuzzer: the
// inputs that were once interesting stay a test.
#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::uint8_t> bytesOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  stream.exceptions(std::ios::badbit);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// The number of files that were replayed.
int replay(const std::filesystem::path& directory) {
  int count = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
    if (!entry.is_regular_file()) continue;
    const auto bytes = bytesOf(entry.path());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    ++count;
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    int count = 0;
    for (const char* directory : std::span(argv, static_cast<std::size_t>(argc)).subspan(1)) {
      count += replay(directory);
    }
    fmt::print("{} inputs replayed\n", count);
    return count > 0 ? 0 : 1;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return 1;
  }
}
