// Loading a log of cursor moves of 6 and of 60 minutes: this system's decoder and its whole load of
// a package, and the same with a document per line by other parsers.
#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <simdjson.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "package/EventLog.h"
#include "package/RecordingProject.h"

namespace {

using vesk::package::RecordedEvent;
using vesk::package::RecordingProject;

constexpr int movesPerMinute = 120 * 60;

/// A log of moves 120 times a second along a random walk, in the digits that a recorder writes.
std::string movesLog(std::int64_t minutes) {
  std::mt19937_64 random(20261120);
  std::normal_distribution<double> step(0, 0.002);
  std::uniform_real_distribution<float> jitter(-0.001F, 0.001F);
  double x = 0.5;
  double y = 0.5;
  std::string text;
  for (std::int64_t index = 0; index < minutes * movesPerMinute; ++index) {
    const double t = static_cast<double>(index) / 120 + static_cast<double>(jitter(random));
    x = std::clamp(x + step(random), 0.0, 1.0);
    y = std::clamp(y + step(random), 0.0, 1.0);
    text += fmt::format("{{\"t\":{},\"type\":\"move\",\"x\":{},\"y\":{}}}\n", t, x, y);
  }
  return text;
}

void reportPerLine(benchmark::State& state) {
  const auto lines = state.iterations() * state.range(0) * movesPerMinute;
  state.counters["per_line"] = benchmark::Counter(
      static_cast<double>(lines), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void decodeWithVesk(benchmark::State& state) {
  const std::string text = movesLog(state.range(0));
  for ([[maybe_unused]] auto _ : state) {
    state.PauseTiming();
    std::string copy;
    copy.reserve(text.size() + 64);
    copy = text;
    state.ResumeTiming();
    auto log = vesk::package::decodeEventLog(std::move(copy));
    benchmark::DoNotOptimize(log);
  }
  reportPerLine(state);
}

/// A package directory that goes away with its owner.
class TemporaryPackage {
 public:
  explicit TemporaryPackage(const std::string& eventLog)
      : path_(std::filesystem::temp_directory_path() /
              fmt::format("event-log-bench-{}.recording", ::getpid())) {
    std::filesystem::create_directories(path_);
    std::ofstream(path_ / "meta.json") << "{}";
    std::ofstream(path_ / "events.jsonl") << eventLog;
  }
  TemporaryPackage(const TemporaryPackage&) = delete;
  TemporaryPackage& operator=(const TemporaryPackage&) = delete;
  ~TemporaryPackage() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

void loadPackage(benchmark::State& state) {
  const TemporaryPackage package(movesLog(state.range(0)));
  for ([[maybe_unused]] auto _ : state) {
    auto project = RecordingProject::load(package.path(), {});
    benchmark::DoNotOptimize(project);
  }
  reportPerLine(state);
}

/// Calls with every line of a text that ends with a line feed.
template <typename Use>
void forEachLine(std::string_view text, Use use) {
  while (!text.empty()) {
    const auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(line.size() + 1);
    use(line);
  }
}

std::vector<RecordedEvent> eventsByNlohmann(std::string_view text) {
  std::vector<RecordedEvent> events;
  events.reserve(text.size() / 64);
  forEachLine(text, [&](std::string_view line) {
    const auto json = nlohmann::json::parse(line);
    auto& event = events.emplace_back();
    event.t = json.at("t").get<double>();
    event.type = *vesk::package::recordedEventKind(json.at("type").get_ref<const std::string&>());
    event.x = json.at("x").get<double>();
    event.y = json.at("y").get<double>();
  });
  return events;
}

void decodeWithNlohmann(benchmark::State& state) {
  const std::string text = movesLog(state.range(0));
  for ([[maybe_unused]] auto _ : state) {
    auto events = eventsByNlohmann(text);
    benchmark::DoNotOptimize(events);
  }
  reportPerLine(state);
}

void loadPackageWithNlohmann(benchmark::State& state) {
  const TemporaryPackage package(movesLog(state.range(0)));
  for ([[maybe_unused]] auto _ : state) {
    std::ifstream file(package.path() / "events.jsonl", std::ios::binary);
    std::string text(std::filesystem::file_size(package.path() / "events.jsonl"), '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    auto project = RecordingProject::make(package.path(), {}, eventsByNlohmann(text));
    benchmark::DoNotOptimize(project);
  }
  reportPerLine(state);
}

/// Only the parse, without an event made of it: what a fast parser of whole documents costs at
/// least.
void parseWithSimdjson(benchmark::State& state) {
  std::string text = movesLog(state.range(0));
  const std::size_t length = text.size();
  text.append(simdjson::SIMDJSON_PADDING, ' ');
  simdjson::dom::parser parser;
  for ([[maybe_unused]] auto _ : state) {
    forEachLine(std::string_view(text).substr(0, length), [&](std::string_view line) {
      auto json = parser.parse(line.data(), line.size(), /*realloc_if_needed=*/false);
      benchmark::DoNotOptimize(json);
    });
  }
  reportPerLine(state);
}

BENCHMARK(decodeWithVesk)->Arg(6)->Arg(60)->Unit(benchmark::kMillisecond);
BENCHMARK(decodeWithNlohmann)->Arg(6)->Arg(60)->Unit(benchmark::kMillisecond);
BENCHMARK(parseWithSimdjson)->Arg(6)->Arg(60)->Unit(benchmark::kMillisecond);
BENCHMARK(loadPackage)->Arg(6)->Arg(60)->Unit(benchmark::kMillisecond);
BENCHMARK(loadPackageWithNlohmann)->Arg(6)->Arg(60)->Unit(benchmark::kMillisecond);

}  // namespace
