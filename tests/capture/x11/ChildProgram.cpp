#include "capture/x11/ChildProgram.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace vesk::capture::x11::test {
namespace {

std::vector<std::string> environmentWith(std::vector<std::string> variables) {
  const std::size_t own = variables.size();
  const auto isReplaced = [&](std::string_view entry) {
    return std::any_of(variables.begin(), variables.begin() + static_cast<std::ptrdiff_t>(own),
                       [&](const std::string& each) {
                         return entry.starts_with(each.substr(0, each.find('=') + 1));
                       });
  };
  for (char** entry = environ; *entry != nullptr; ++entry) {
    if (!isReplaced(*entry)) variables.emplace_back(*entry);
  }
  return variables;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

ChildProgram::ChildProgram(std::vector<std::string> command, std::vector<std::string> variables,
                           int inherited) {
  command.insert(command.begin(), {"setpriv", "--pdeathsig", "KILL", "--"});
  std::vector<std::string> environment = environmentWith(std::move(variables));
  posix_spawn_file_actions_t actions{};
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  // A duplicate onto itself lets a descriptor through that would be closed otherwise.
  if (inherited >= 0) posix_spawn_file_actions_adddup2(&actions, inherited, inherited);
  const int status = posix_spawnp(&process_, command.front().c_str(), &actions, nullptr,
                                  pointersTo(command).data(), pointersTo(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  if (status != 0) throw std::runtime_error("cannot start " + command.back());
}

ChildProgram::ChildProgram(ChildProgram&& other) noexcept
    : process_{std::exchange(other.process_, -1)} {}

ChildProgram::~ChildProgram() {
  send(SIGKILL);
  finish();
}

void ChildProgram::send(int signal) const {
  if (process_ > 0) ::kill(process_, signal);
}

int ChildProgram::finish() {
  if (process_ <= 0) return -1;
  int status = 0;
  ::waitpid(std::exchange(process_, -1), &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace vesk::capture::x11::test
