#pragma once

#include <memory>
#include <string>
#include <vector>

#include "capture/x11/ChildProgram.h"
#include "package/TemporaryDirectory.h"

namespace vesk::capture::pipewire::test {

/// PipeWire with a session manager of the test's own, without any hardware. They are ended with the
/// object.
class TestSoundServer {
 public:
  /// Returns when both answer.
  TestSoundServer();
  TestSoundServer(const TestSoundServer&) = delete;
  TestSoundServer& operator=(const TestSoundServer&) = delete;
  ~TestSoundServer();

  /// What a client connects to.
  [[nodiscard]] std::string remote() const;
  /// Variables by which any program finds this server.
  [[nodiscard]] std::vector<std::string> environment() const;

  /// Makes a sink or source the default, as a user would.
  void setDefaultSink(const std::string& nodeName) const;
  void setDefaultSource(const std::string& nodeName) const;
  /// Ends the server as a crash would.
  void kill();
  /// Starts another server in the place of one that was killed, where clients find it as before;
  /// returns when it answers.
  void restart();
  /// Makes the server stand still, and go on.
  void freeze() const;
  void thaw() const;

 private:
  void startServer();
  void setDefault(const std::string& key, const std::string& nodeName) const;
  std::unique_ptr<x11::test::ChildProgram> start(std::vector<std::string> command) const;

  package::TemporaryDirectory directory_;
  std::unique_ptr<x11::test::ChildProgram> bus_;
  std::unique_ptr<x11::test::ChildProgram> server_;
  std::unique_ptr<x11::test::ChildProgram> sessionManager_;
};

}  // namespace vesk::capture::pipewire::test
