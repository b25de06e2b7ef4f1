#include "package/FileSystemCalls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace vesk::package {

namespace {

class SystemCalls final : public FileSystemCalls {
 public:
  int open(const char* path, int flags, mode_t mode) override { return ::open(path, flags, mode); }
  int lock(int descriptor) override { return ::flock(descriptor, LOCK_EX | LOCK_NB); }
  int changeMode(int descriptor, mode_t mode) override { return ::fchmod(descriptor, mode); }
  ssize_t write(int descriptor, const void* data, std::size_t size) override {
    return ::write(descriptor, data, size);
  }
  int synchronize(int descriptor) override { return ::fsync(descriptor); }
  int close(int descriptor) override { return ::close(descriptor); }
  int rename(const char* from, const char* to) override { return ::rename(from, to); }
  int unlink(const char* path) override { return ::unlink(path); }
};

}  // namespace

FileSystemCalls& systemCalls() {
  static SystemCalls calls;
  return calls;
}

}  // namespace vesk::package
