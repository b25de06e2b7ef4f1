#include "app/RunningProcess.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace vesk::app::test {
namespace {

/// Two ends of a channel: what is written to `sink` can be read from `source`.
struct Channel {
  int source = -1;
  int sink = -1;
};

Channel openPipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  return {.source = ends[0], .sink = ends[1]};
}

Channel openTerminal() {
  const int source = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (source < 0 || ::grantpt(source) != 0 || ::unlockpt(source) != 0) {
    throw std::runtime_error("no terminal");
  }
  const int sink = ::open(::ptsname(source), O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (sink < 0) throw std::runtime_error("no terminal");
  return {.source = source, .sink = sink};
}

std::vector<std::string> environmentWith(const RunningProcess::Variables& variables) {
  std::vector<std::string> entries;
  for (const auto& [name, value] : variables) entries.push_back(fmt::format("{}={}", name, value));
  const auto isReplaced = [&](std::string_view entry) {
    return std::ranges::any_of(variables, [&](const auto& each) {
      return entry.starts_with(fmt::format("{}=", each.first));
    });
  };
  for (char** entry = environ; *entry != nullptr; ++entry) {
    if (!isReplaced(*entry)) entries.emplace_back(*entry);
  }
  return entries;
}

/// The form in which strings go to a new program.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

pid_t spawn(std::vector<std::string> command, std::vector<std::string> environment, int output) {
  posix_spawn_file_actions_t actions{};
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);

  // Whoever started the tests may have had signals ignored or blocked.
  sigset_t usual{};
  sigemptyset(&usual);
  sigaddset(&usual, SIGINT);
  sigaddset(&usual, SIGTERM);
  sigaddset(&usual, SIGHUP);
  sigset_t none{};
  sigemptyset(&none);
  posix_spawnattr_t attributes{};
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  posix_spawnattr_setsigdefault(&attributes, &usual);
  posix_spawnattr_setsigmask(&attributes, &none);

  pid_t process = -1;
  const int status = posix_spawnp(&process, command.front().c_str(), &actions, &attributes,
                                  pointersTo(command).data(), pointersTo(environment).data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (status != 0) throw std::runtime_error("cannot start " + command.front());
  return process;
}

}  // namespace

RunningProcess::RunningProcess(const std::vector<std::string>& command, const Variables& variables,
                               Output output) {
  const Channel channel = output == Output::pipe ? openPipe() : openTerminal();
  source_ = channel.source;
  process_ = spawn(command, environmentWith(variables), channel.sink);
  ::close(channel.sink);
}

RunningProcess::~RunningProcess() {
  if (process_ > 0) {
    send(SIGKILL);
    finish();
  }
  ::close(source_);
}

bool RunningProcess::readMore() {
  std::array<char, 4096> block{};
  // A terminal whose other end is closed gives an error instead of an end.
  const ssize_t count = ::read(source_, block.data(), block.size());
  if (count > 0) output_.append(block.data(), static_cast<std::size_t>(count));
  return count > 0;
}

bool RunningProcess::waitFor(std::string_view text) {
  while (output_.find(text) == std::string::npos) {
    if (!readMore()) return false;
  }
  return true;
}

void RunningProcess::send(int signal) const {
  ::kill(process_, signal);
}

bool RunningProcess::hasEnded() const {
  siginfo_t end{};
  // Leaves the process to be waited for.
  return ::waitid(P_PID, static_cast<id_t>(process_), &end, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         end.si_pid == process_;
}

int RunningProcess::finish() {
  while (readMore()) {
  }
  int status = 0;
  ::waitpid(std::exchange(process_, -1), &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace vesk::app::test
