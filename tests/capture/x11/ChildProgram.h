#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace vesk::capture::x11::test {

/// A program that runs beside the test. It is ended with the object, and dies with the test.
class ChildProgram {
 public:
  /// @param command the program, to be found on the path, and its arguments.
  /// @param variables of the environment as "NAME=value", on top of the test's own.
  /// @param inherited a descriptor that the program keeps under the same number; −1 for none.
  explicit ChildProgram(std::vector<std::string> command, std::vector<std::string> variables = {},
                        int inherited = -1);
  ChildProgram(ChildProgram&& other) noexcept;
  ChildProgram& operator=(ChildProgram&&) = delete;
  ChildProgram(const ChildProgram&) = delete;
  ChildProgram& operator=(const ChildProgram&) = delete;
  ~ChildProgram();

  [[nodiscard]] pid_t id() const noexcept { return process_; }
  void send(int signal) const;
  /// Waits for the end. The exit code, −1 when a signal ended it.
  int finish();

 private:
  pid_t process_ = -1;
};

}  // namespace vesk::capture::x11::test
