#pragma once

#include <chrono>
#include <thread>

namespace vesk::capture::x11::test {

/// Asks every few milliseconds until it holds or ten seconds have passed; whether it holds.
template <typename Condition>
bool eventually(Condition condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds{10};
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds{5});
  }
  return true;
}

}  // namespace vesk::capture::x11::test
