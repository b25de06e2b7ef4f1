#include "capture/x11/EventThread.h"

#include <poll.h>
#include <pthread.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace vesk::capture::x11 {
namespace {

constexpr double longestWait = 3600;  // seconds

/// For `poll`, which counts milliseconds and waits for ever below 0.
int milliseconds(std::optional<double> seconds) {
  if (!seconds) return -1;
  return static_cast<int>(std::ceil(std::clamp(*seconds, 0.0, longestWait) * 1000));
}

}  // namespace

EventThread::EventThread(const Connection& connection, const char* name, OnEvent onEvent,
                         OnPause onPause)
    : connection_{connection},
      thread_{[this, name, onEvent = std::move(onEvent),
               onPause = std::move(onPause)](const std::stop_token& stop) {
        ::pthread_setname_np(::pthread_self(), name);
        run(stop, onEvent, onPause);
      }} {}

EventThread::~EventThread() {
  thread_.request_stop();
  wake();
  thread_.join();
}

void EventThread::wake() const {
  bell_.ring();
}

void EventThread::run(const std::stop_token& stop, const OnEvent& onEvent,
                      const OnPause& onPause) const {
  while (!stop.stop_requested()) {
    if (const auto event = owned(xcb_poll_for_event(connection_.get()))) {
      onEvent(Event{event.get()});
    } else if (!waitForMore(onPause())) {
      return;
    }
  }
}

bool EventThread::waitForMore(std::optional<double> timeout) const {
  // What a callback asked for may have brought events along, too.
  if (timeout && *timeout <= 0) return connection_.isAlive();
  xcb_flush(connection_.get());
  std::array<pollfd, 2> sources{
      {{.fd = xcb_get_file_descriptor(connection_.get()), .events = POLLIN, .revents = 0},
       {.fd = bell_.descriptor(), .events = POLLIN, .revents = 0}}};
  ::poll(sources.data(), sources.size(), milliseconds(timeout));
  bell_.silence();
  return connection_.isAlive();
}

}  // namespace vesk::capture::x11
