#pragma once

#include <string>

#include "capture/x11/ChildProgram.h"
#include "package/TemporaryDirectory.h"

namespace vesk::app::test {

/// A session bus of the test's own, which ends with the object.
class SessionBus {
 public:
  /// Returns when it can be connected to.
  SessionBus();

  const std::string& address() const { return address_; }

 private:
  package::TemporaryDirectory folder_;
  std::string address_ = "unix:path=" + (folder_ / "bus").string();
  capture::x11::test::ChildProgram daemon_;
};

}  // namespace vesk::app::test
