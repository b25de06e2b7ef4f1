#pragma once

#include <sys/types.h>

#include <cstddef>

namespace vesk::package {

/// The system calls by which a file is written, as a seam: a test can make each of them fail, or
/// end the process there. Arguments, results and errno are those of the calls themselves.
class FileSystemCalls {
 public:
  virtual ~FileSystemCalls() = default;

  virtual int open(const char* path, int flags, mode_t mode) = 0;
  virtual int lock(int descriptor) = 0;  ///< flock, exclusive, without waiting
  virtual int changeMode(int descriptor, mode_t mode) = 0;
  virtual ssize_t write(int descriptor, const void* data, std::size_t size) = 0;
  virtual int synchronize(int descriptor) = 0;  ///< fsync
  virtual int close(int descriptor) = 0;
  virtual int rename(const char* from, const char* to) = 0;
  virtual int unlink(const char* path) = 0;
};

/// The calls of the operating system. May be used from any thread.
FileSystemCalls& systemCalls();

}  // namespace vesk::package
