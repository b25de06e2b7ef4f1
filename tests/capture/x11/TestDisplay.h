#pragma once

#include <memory>
#include <string>
#include <vector>

#include "capture/x11/ChildProgram.h"
#include "capture/x11/Connection.h"

namespace vesk::capture::x11::test {

/// A display server of the test's own, without hardware: one screen of 24 bits, all extensions and
/// XTEST. It is ended with the object together with all programs that were started on it.
class TestDisplay {
 public:
  struct Options {
    int width = 640;
    int height = 480;
    bool hasWindowManager = false;       ///< openbox
    std::vector<std::string> arguments;  ///< more of them for the server
  };

  TestDisplay() : TestDisplay{Options{}} {}
  /// Returns when the server and the window manager answer.
  explicit TestDisplay(const Options& options);
  TestDisplay(const TestDisplay&) = delete;
  TestDisplay& operator=(const TestDisplay&) = delete;
  ~TestDisplay();

  /// Such as ":7".
  const std::string& name() const { return name_; }
  /// The fixture's own connection, for requests of the test's only thread.
  const Connection& connection() const { return *connection_; }

  /// Starts a program on this display; it ends with the display at the latest.
  ChildProgram& start(std::vector<std::string> command);
  /// Runs a program on this display to its end; its exit code.
  int run(std::vector<std::string> command) const;

  /// Waits until the server has done everything that the fixture's connection asked for.
  void sync() const;
  /// Ends the server as a crash would. Its name goes to no other one before this object is gone.
  void kill();
  /// Makes the server stand still, and go on.
  void freeze() const;
  void thaw() const;

 private:
  std::vector<std::string> environment() const;
  void keepName();

  int nameSocket_ = -1;  ///< see keepName
  std::unique_ptr<ChildProgram> server_;
  std::string name_;
  std::unique_ptr<Connection> connection_;
  std::vector<std::unique_ptr<ChildProgram>> programs_;
};

}  // namespace vesk::capture::x11::test
