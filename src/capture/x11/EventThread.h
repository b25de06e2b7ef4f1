#pragma once

#include <functional>
#include <optional>
#include <thread>

#include "capture/x11/Bell.h"
#include "capture/x11/Connection.h"
#include "capture/x11/Event.h"

namespace vesk::capture::x11 {

/// Reads the events of a connection on a thread of its own for as long as it lives, or until the
/// server has gone.
class EventThread {
 public:
  using OnEvent = std::function<void(const Event&)>;
  /// The result is in how many seconds it wants to be called again if no event comes; nothing for
  /// never.
  using OnPause = std::function<std::optional<double>()>;

  /// @param connection must outlive the thread.
  /// @param name of the thread, at most 15 bytes.
  /// @param onPause is called whenever all events have been read.
  EventThread(
      const Connection& connection, const char* name, OnEvent onEvent,
      OnPause onPause = [] { return std::nullopt; });
  EventThread(const EventThread&) = delete;
  EventThread& operator=(const EventThread&) = delete;
  /// Waits for a call that runs meanwhile.
  ~EventThread();

  /// To be called by other threads that have asked the server something over the same connection:
  /// what they read may have brought events along.
  void wake() const;

 private:
  void run(const std::stop_token& stop, const OnEvent& onEvent, const OnPause& onPause) const;
  /// False once the server has gone.
  bool waitForMore(std::optional<double> timeout) const;

  const Connection& connection_;
  Bell bell_;
  std::jthread thread_;
};

}  // namespace vesk::capture::x11
