#pragma once

#include <spdlog/sinks/ostream_sink.h>
#include <spdlog/spdlog.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "package/Log.h"

namespace vesk::package {

/// What an area writes to the system log while this lives, one "level: text" a line.
class LogCapture {
 public:
  explicit LogCapture(LogCategory category)
      : logger_(log(category)), sinks_(logger_.sinks()), level_(logger_.level()) {
    logger_.sinks() = {std::make_shared<spdlog::sinks::ostream_sink_mt>(text_)};
    logger_.set_pattern("%l: %v");
    logger_.set_level(spdlog::level::info);
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;
  ~LogCapture() {
    logger_.sinks() = sinks_;
    logger_.set_level(level_);
  }

  std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
  spdlog::logger& logger_;
  std::vector<spdlog::sink_ptr> sinks_;
  spdlog::level::level_enum level_;
};

}  // namespace vesk::package
