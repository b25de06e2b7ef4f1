#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <functional>
#include <vector>

#include "package/FileSystemCalls.h"

namespace vesk::package {

/// The system's calls with something done before or after one of them, or in its stead. Writes take
/// no more than a few bytes at once, so that a text needs several.
class FaultyCalls final : public FileSystemCalls {
 public:
  enum class Call { open, lock, changeMode, write, synchronize, close, rename, unlink };

  /// Asked before each call, with its number from 0: nothing to let it through, or an errno value
  /// with which to fail instead. A close is always done.
  std::function<int(std::size_t number, Call call)> before = [](std::size_t, Call) { return 0; };
  /// Called in the middle of each write and after each call.
  std::function<void(std::size_t number, Call call)> midway = [](std::size_t, Call) {};
  std::function<void(std::size_t number, Call call)> after = [](std::size_t, Call) {};

  std::size_t bytesAtOnce = 1000;

  /// The calls so far.
  const std::vector<Call>& calls() const { return calls_; }

  int open(const char* path, int flags, mode_t mode) override {
    return made(Call::open, [&] { return system_.open(path, flags, mode); });
  }
  int lock(int descriptor) override {
    return made(Call::lock, [&] { return system_.lock(descriptor); });
  }
  int changeMode(int descriptor, mode_t mode) override {
    return made(Call::changeMode, [&] { return system_.changeMode(descriptor, mode); });
  }
  ssize_t write(int descriptor, const void* data, std::size_t size) override {
    return made(Call::write, [&]() -> ssize_t {
      const std::size_t some = std::min(size, bytesAtOnce);
      const std::size_t half = some / 2;
      if (system_.write(descriptor, data, half) != static_cast<ssize_t>(half)) return -1;
      midway(calls_.size() - 1, Call::write);
      const auto* rest = static_cast<const char*>(data) + half;
      if (system_.write(descriptor, rest, some - half) < 0) return -1;
      return static_cast<ssize_t>(some);
    });
  }
  int synchronize(int descriptor) override {
    return made(Call::synchronize, [&] { return system_.synchronize(descriptor); });
  }
  int close(int descriptor) override {
    calls_.push_back(Call::close);
    const int error = before(calls_.size() - 1, Call::close);
    const int result = system_.close(descriptor);
    after(calls_.size() - 1, Call::close);
    errno = error;
    return error != 0 ? -1 : result;
  }
  int rename(const char* from, const char* to) override {
    return made(Call::rename, [&] { return system_.rename(from, to); });
  }
  int unlink(const char* path) override {
    return made(Call::unlink, [&] { return system_.unlink(path); });
  }

 private:
  template <typename Real>
  auto made(Call call, Real real) -> decltype(real()) {
    calls_.push_back(call);
    const std::size_t number = calls_.size() - 1;
    if (const int error = before(number, call)) {
      errno = error;
      return -1;
    }
    const auto result = real();
    const int code = errno;
    after(number, call);
    errno = code;
    return result;
  }

  FileSystemCalls& system_ = systemCalls();
  std::vector<Call> calls_;
};

}  // namespace vesk::package
