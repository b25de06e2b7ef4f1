#include "app/VeskProcess.h"

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

namespace vesk::app::test {
namespace {

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) {
    result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return result + "'";
}

std::string contentsOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

VeskProcess::VeskProcess() {
  const nlohmann::json settings{{"recordingLibraryPath", home_ / "library"}};
  home_.put("config/vesk/defaults.json", settings.dump());
}

VeskProcess::Result VeskProcess::run(const std::vector<std::string>& arguments,
                                     const Surroundings& surroundings) const {
  const std::filesystem::path& home = home_.path();
  const std::filesystem::path output =
      surroundings.output.empty() ? home / "output" : surroundings.output;
  const std::filesystem::path temporary =
      surroundings.temporary.empty() ? home : surroundings.temporary;
  const std::filesystem::path errors = home / "errors";
  std::string command =
      "cd " + quoted(home) + " && env -i PATH=/usr/bin:/bin HOME=" + quoted(home) +
      " TMPDIR=" + quoted(temporary) + " XDG_CONFIG_HOME=" + quoted(home / "config");
  for (const std::string& variable : surroundings.variables) command += " " + quoted(variable);
  command += " " + quoted(VESK_EXECUTABLE);
  for (const std::string& argument : arguments) {
    command += " " + quoted(argument);
  }
  command += " >" + quoted(output) + " 2>" + quoted(errors) + " </dev/null";
  const int status = std::system(command.c_str());  // NOLINT: the shell redirects the streams
  Result result;
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  if (surroundings.output.empty()) {
    result.output = contentsOf(output);
  }
  result.errors = contentsOf(errors);
  return result;
}

}  // namespace vesk::app::test
