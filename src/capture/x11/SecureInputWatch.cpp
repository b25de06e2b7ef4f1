#include "capture/x11/SecureInputWatch.h"

#include <pthread.h>

#include "capture/x11/AccessibilityBus.h"
#include "package/Log.h"

namespace vesk::capture::x11 {
namespace {

spdlog::logger& eventsLog() {
  return package::log(package::LogCategory::events);
}

}  // namespace

SecureInputWatch::SecureInputWatch()
    : thread_{[this](const std::stop_token& stop) {
        ::pthread_setname_np(::pthread_self(), "vesk.secure");
        run(stop);
      }} {}

SecureInputWatch::~SecureInputWatch() {
  thread_.request_stop();
  bell_.ring();
  thread_.join();
}

void SecureInputWatch::run(const std::stop_token& stop) {
  const auto bus = AccessibilityBus::open();
  if (!bus) {
    eventsLog().warn("password fields cannot be told: {}", bus.error().message);
    return;
  }
  eventsLog().info("password fields are told by the accessibility bus");
  while (!stop.stop_requested()) {
    const bool isThere = (*bus)->process(bell_);
    isOn_ = isThere && (*bus)->isInPasswordField();
    if (isThere) continue;
    eventsLog().warn("password fields cannot be told any more: the accessibility bus has gone");
    return;
  }
}

}  // namespace vesk::capture::x11
