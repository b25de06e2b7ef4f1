#include "capture/v4l2/VideoDeviceCalls.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <map>
#include <string_view>
#include <system_error>

namespace vesk::capture::v4l2 {
namespace {

constexpr int longestWait = 100;  // milliseconds

class SystemCalls final : public VideoDeviceCalls {
 public:
  std::vector<std::string> paths() override {
    constexpr std::string_view prefix = "video";
    std::map<int, std::string> found;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator{"/dev", error}) {
      const std::string name = entry.path().filename();
      int number = 0;
      if (!name.starts_with(prefix)) continue;
      const char* const end = name.data() + name.size();
      const auto [rest, status] = std::from_chars(name.data() + prefix.size(), end, number);
      if (status == std::errc{} && rest == end) found[number] = entry.path();
    }
    std::vector<std::string> paths;
    paths.reserve(found.size());
    for (auto& [number, path] : found) paths.push_back(std::move(path));
    return paths;
  }

  int open(const char* path) override { return ::open(path, O_RDWR | O_NONBLOCK | O_CLOEXEC); }
  int close(int descriptor) override { return ::close(descriptor); }

  int control(int descriptor, unsigned long request, void* argument) override {
    int result = 0;
    do {
      result = ::ioctl(descriptor, request, argument);
    } while (result < 0 && errno == EINTR);
    return result;
  }

  void* map(int descriptor, std::size_t size, std::size_t offset) override {
    void* const memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor,
                                static_cast<off_t>(offset));
    return memory == MAP_FAILED ? nullptr : memory;
  }

  int unmap(void* memory, std::size_t size) override { return ::munmap(memory, size); }

  int waitForFrame(int descriptor) override {
    pollfd wanted{.fd = descriptor, .events = POLLIN, .revents = 0};
    const int result = ::poll(&wanted, 1, longestWait);
    return result < 0 && errno == EINTR ? 0 : result;
  }
};

}  // namespace

VideoDeviceCalls& systemVideoDeviceCalls() {
  static SystemCalls calls;
  return calls;
}

}  // namespace vesk::capture::v4l2
