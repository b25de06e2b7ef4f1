// The scan of a library of 1000 packages with a log of 1 MB each, and of their logs alone, against
// a line-by-line search. "Cold" drops the files from the page cache before each scan.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "package/EventCounts.h"
#include "package/RecordingLibrary.h"

namespace {

using namespace vesk;
using package::EventCounts;

constexpr int packageCount = 1000;
constexpr std::size_t logSize = 1'000'000;

/// A log of cursor moves with a click or a mark now and then, each time another one.
std::string makeLog(std::mt19937_64& random) {
  std::uniform_real_distribution<double> place(0, 1);
  std::uniform_int_distribution<int> kind(0, 299);
  std::string text;
  for (int index = 0; text.size() < logSize; ++index) {
    const double t = index / 120.0;
    const double x = place(random);
    const double y = place(random);
    const int drawn = kind(random);
    if (drawn > 2) {
      text += fmt::format("{{\"t\":{},\"type\":\"move\",\"x\":{},\"y\":{}}}\n", t, x, y);
    } else if (drawn > 0) {
      text += fmt::format(
          "{{\"button\":\"left\",\"clickCount\":1,\"t\":{},\"type\":\"click\",\"x\":{},\"y\":{}}}"
          "\n",
          t, x, y);
    } else {
      text += fmt::format("{{\"t\":{},\"type\":\"zoomIn\",\"x\":{},\"y\":{}}}\n", t, x, y);
    }
  }
  return text;
}

/// A library on the disk that goes away with its owner.
class LibraryFolder {
 public:
  LibraryFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "library-bench-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    path_ = pattern;
    std::mt19937_64 random(20261121);
    for (int index = 0; index < packageCount; ++index) {
      const auto package = path_ / fmt::format("{:04}.recording", index);
      std::filesystem::create_directory(package);
      std::ofstream(package / "meta.json") << R"({"duration":60,"fps":60,"captureWidth":1920})";
      std::ofstream(package / "events.jsonl", std::ios::binary) << makeLog(random);
      logs_.push_back(package / "events.jsonl");
    }
    ::sync();
  }
  LibraryFolder(const LibraryFolder&) = delete;
  LibraryFolder& operator=(const LibraryFolder&) = delete;
  ~LibraryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }
  const std::vector<std::filesystem::path>& logs() const { return logs_; }

  void dropFromPageCache() const {
    for (const auto& log : logs_) {
      const int file = ::open(log.c_str(), O_RDONLY | O_CLOEXEC);
      ::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
      ::close(file);
    }
  }

 private:
  std::filesystem::path path_;
  std::vector<std::filesystem::path> logs_;
};

const LibraryFolder& libraryFolder() {
  static const LibraryFolder folder;
  return folder;
}

std::optional<EventCounts> countByLines(const std::filesystem::path& file) {
  std::ifstream stream(file);
  const auto holds = [](const std::string& line, const char* word) {
    return line.find(word) != std::string::npos;
  };
  EventCounts counts;
  for (std::string line; std::getline(stream, line);) {
    if (holds(line, "\"click\"")) {
      ++counts.clicks;
    } else if (holds(line, "\"zoomIn\"") || holds(line, "\"zoomOut\"")) {
      ++counts.marks;
    }
  }
  return counts;
}

package::RecordingLibrary makeLibrary(package::UserDefaults& defaults) {
  return package::RecordingLibrary(
      {.defaults = defaults,
       .trashFolder = package::TrashFolder(package::TrashFolder::currentSurroundings()),
       .makeThumbnail = {},
       .askForFolder = {},
       .now = [] { return package::Timestamp{}; }});
}

void scanLibrary(benchmark::State& state) {
  const bool isCold = state.range(0) != 0;
  const auto& folder = libraryFolder();
  package::UserDefaults defaults(folder.path() / "defaults.json");
  auto library = makeLibrary(defaults);
  library.setRoot(folder.path());
  if (library.items().size() != packageCount) state.SkipWithError("a package is missing");
  for ([[maybe_unused]] auto _ : state) {
    if (isCold) {
      state.PauseTiming();
      folder.dropFromPageCache();
      state.ResumeTiming();
    }
    library.rescan();
  }
}

template <auto count>
void countLogs(benchmark::State& state) {
  EventCounts sum;
  for ([[maybe_unused]] auto _ : state) {
    sum = {};
    for (const auto& log : libraryFolder().logs()) {
      const auto counts = count(log).value_or(EventCounts{});
      sum.clicks += counts.clicks;
      sum.marks += counts.marks;
    }
  }
  state.counters["clicks"] = static_cast<double>(sum.clicks);
  state.counters["marks"] = static_cast<double>(sum.marks);
}

BENCHMARK(scanLibrary)->ArgName("cold")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(countLogs<package::countEvents>)->Unit(benchmark::kMillisecond);
BENCHMARK(countLogs<countByLines>)->Unit(benchmark::kMillisecond);

}  // namespace
