#include "package/Log.h"

#include <fmt/format.h>
#include <spdlog/sinks/dist_sink.h>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/sinks/systemd_sink.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string_view>

#include "package/LogRoute.h"

namespace vesk::package {
namespace {

constexpr std::array<std::string_view, 12> categoryNames{
    "app",    "session", "capture", "events", "camera", "mic",
    "hotkey", "project", "preview", "render", "export", "library"};
static_assert(categoryNames.size() == static_cast<std::size_t>(LogCategory::library) + 1);

spdlog::sink_ptr makeSink(LogRoute::Target target) {
  if (target == LogRoute::Target::journal) {
    // Each entry bears the logger's name as its identifier. With no journal running, an entry is
    // dropped without an error.
    return std::make_shared<spdlog::sinks::systemd_sink_mt>();
  }
  auto sink = std::make_shared<spdlog::sinks::stderr_color_sink_mt>();
  sink->set_pattern("%H:%M:%S.%e %n %^%l%$: %v");
  return sink;
}

spdlog::level::level_enum lowestLevel(const LogRoute& route) {
  return route.includesInfo ? spdlog::level::info : spdlog::level::err;
}

/// All loggers write to one sink that passes on to the sink in use, so that the log can change its
/// way while other threads write.
class Loggers {
 public:
  Loggers() {
    outlet_->add_sink(makeSink(LogRoute::Target::standardError));
    for (std::size_t index = 0; index < categoryNames.size(); ++index) {
      loggers_[index] = std::make_unique<spdlog::logger>(
          fmt::format("com.ordel.vesk.{}", categoryNames[index]), outlet_);
      loggers_[index]->set_level(spdlog::level::err);
      loggers_[index]->flush_on(spdlog::level::info);
    }
  }

  spdlog::logger& of(LogCategory category) const {
    return *loggers_.at(static_cast<std::size_t>(category));
  }

  void follow(const LogRoute& route) {
    outlet_->set_sinks({makeSink(route.target)});
    for (const auto& logger : loggers_) logger->set_level(lowestLevel(route));
  }

 private:
  std::shared_ptr<spdlog::sinks::dist_sink_mt> outlet_ =
      std::make_shared<spdlog::sinks::dist_sink_mt>();
  std::array<std::unique_ptr<spdlog::logger>, categoryNames.size()> loggers_;
};

Loggers& loggers() {
  static Loggers instance;
  return instance;
}

}  // namespace

spdlog::logger& log(LogCategory category) {
  return loggers().of(category);
}

void startLogging() {
  loggers().follow(logRoute(currentLogSurroundings()));
}

}  // namespace vesk::package
