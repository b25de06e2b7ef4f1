#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vesk::app::test {

/// A program that runs beside the test, which reads its standard output as it comes and may send it
/// signals. Ended at the latest with the object.
class RunningProcess {
 public:
  enum class Output { pipe, terminal };
  using Variables = std::vector<std::pair<std::string, std::string>>;

  /// @param command the program, to be found on the path, and its arguments.
  /// @param variables of the environment, on top of the test's own.
  explicit RunningProcess(const std::vector<std::string>& command, const Variables& variables = {},
                          Output output = Output::pipe);
  RunningProcess(const RunningProcess&) = delete;
  RunningProcess& operator=(const RunningProcess&) = delete;
  ~RunningProcess();

  /// Waits until the output holds this text; false when it ended without.
  bool waitFor(std::string_view text);

  pid_t id() const { return process_; }
  /// Whether it has come to its end by itself. Does not wait for that.
  bool hasEnded() const;
  void send(int signal) const;

  /// Waits for the end. The exit code, −1 when a signal ended it.
  int finish();

  /// What has been read so far, after finish() all of it.
  const std::string& output() const { return output_; }

 private:
  bool readMore();

  pid_t process_ = -1;
  int source_ = -1;
  std::string output_;
};

}  // namespace vesk::app::test
