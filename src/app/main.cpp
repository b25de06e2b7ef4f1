#include <fmt/format.h>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <span>
#include <string>

#include "app/CommandContext.h"
#include "app/RendererLayout.h"
#include "app/VeskCLI.h"
#include "package/LibraryRoot.h"
#include "package/Log.h"
#include "package/UserDefaults.h"

namespace {

using namespace vesk;

std::filesystem::path libraryRoot() {
  return package::currentRootFromDefaults(
      package::UserDefaults(package::UserDefaults::defaultFile()));
}

void explainCommands() {
  std::string flags;
  for (const app::Command& command : app::commands()) {
    flags += fmt::format(" {}", command.flag);
  }
  fmt::print(stderr, "这个版本只响应命令行，可用的命令有{}\n", flags);
}

/// Output that could not be written, to a full disk for one, must not pass for a finished command.
bool closeOutput() {
  const bool written = std::ferror(stdout) == 0 && std::fflush(stdout) == 0;
  if (!written) {
    fmt::print(stderr, "无法写出结果：标准输出不可写或磁盘已满\n");
  }
  return written;
}

}  // namespace

int main(int argc, char** argv) {
  package::startLogging();
  const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  const app::CommandContext context{
      .commandLine = app::CommandLine({argv, static_cast<std::size_t>(argc)}),
      .out = stdout,
      .now = now,
      .libraryRoot = libraryRoot,
      .pictureLayout = app::rendererLayout(now),
  };
  const std::optional<int> exitCode = app::dispatch(context);
  if (!exitCode) {
    explainCommands();
    return 1;
  }
  return closeOutput() ? *exitCode : 1;
}
