#pragma once

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace vesk::test {

/// Files of this process cannot grow over `bytes` while this lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : previousHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &previous_);
    const rlimit limited{bytes, previous_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limited);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &previous_);
    std::signal(SIGXFSZ, previousHandler_);
  }

 private:
  rlimit previous_{};
  void (*previousHandler_)(int);
};

/// For root no folder is closed, so root becomes somebody else while this lives.
class WithoutPrivileges {
 public:
  WithoutPrivileges() {
    constexpr uid_t nobody = 65534;
    if (::geteuid() == 0 && ::seteuid(nobody) != 0) std::abort();
  }
  WithoutPrivileges(const WithoutPrivileges&) = delete;
  WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;
  ~WithoutPrivileges() {
    if (::seteuid(::getuid()) != 0) std::abort();
  }
};

}  // namespace vesk::test
