#include "app/HotKeysCommand.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "capture/HotKeyManager.h"
#include "capture/ShortcutSettings.h"
#include "package/UserDefaults.h"

namespace vesk::app {
namespace {

using Action = capture::HotKeyManager::Action;
using Seconds = std::chrono::duration<double>;

constexpr double listeningSeconds = 12;
constexpr Seconds untilZoomIn{1.0};
constexpr Seconds untilZoomOut{0.6};  // after the first

struct Combinations {
  capture::Shortcut zoomIn = capture::defaultZoomIn;
  capture::Shortcut zoomOut = capture::defaultZoomOut;
};

std::string_view labelOf(Action action) {
  return action == Action::zoomIn ? "放大" : "还原";
}

std::string_view inWords(bool value) {
  return value ? "是" : "否";
}

bool isSandboxed() {
  return std::getenv("APP_SANDBOX_CONTAINER_ID") != nullptr ||  // NOLINT: nobody sets variables
         std::getenv("FLATPAK_ID") != nullptr;                  // NOLINT: likewise
}

Combinations combinations(bool isDefault) {
  if (isDefault) return {};
  package::UserDefaults defaults{package::UserDefaults::defaultFile()};
  const capture::ShortcutSettings settings{defaults};
  return {.zoomIn = settings.zoomIn(), .zoomOut = settings.zoomOut()};
}

void printHeading(const CommandContext& context, const Combinations& keys,
                  capture::CaptureBackends& backends) {
  const bool hasPlainLoop = context.commandLine.has("--runloop");
  const bool isDefault = context.commandLine.has("--default-keys");
  const capture::KeyNames names{backends.keyboardLayout};
  fmt::print(context.out, "  沙盒：{}   事件循环：{}\n", inWords(isSandboxed()),
             hasPlainLoop ? "裸 RunLoop（对照组）" : "NSApplication");
  fmt::print(context.out, "  辅助功能授权：{}\n", inWords(backends.capabilities.hotKeys));
  fmt::print(context.out, "  ⚠️ 只按下面打印的这两个组合，别按你记忆里的：\n");
  fmt::print(context.out, "     放大 {}\n      还原 {}\n",
             capture::displayString(keys.zoomIn, names),
             capture::displayString(keys.zoomOut, names));
  fmt::print(
      context.out, "     来源：{}\n",
      isDefault ? "代码默认值（--default-keys，不读 UserDefaults）" : "本 App 的 UserDefaults");
}

int refuse(const CommandContext& context, const std::vector<Action>& failed) {
  std::vector<std::string_view> labels;
  std::ranges::transform(failed, std::back_inserter(labels), labelOf);
  fmt::print(context.out,
             "  ✗ 注册失败：{}\n     （通常是被别的 App 占用了；沙盒下失败则说明这条路走不通）\n",
             fmt::join(labels, "、"));
  return 1;
}

void pressBoth(CaptureStage& stage, const Combinations& keys) {
  stage.runFor(untilZoomIn);
  stage.backends().injector->press(keys.zoomIn);
  stage.runFor(untilZoomOut);
  stage.backends().injector->press(keys.zoomOut);
}

}  // namespace

int diagnoseHotKeys(const CommandContext& context) {
  fmt::print(context.out, "=== 全局热键 ===\n");
  auto stage = context.makeCaptureStage();
  if (!stage) {
    fmt::print(context.out, "  ✗ 启动失败：{}\n", stage.error());
    return 1;
  }
  auto& backends = (*stage)->backends();
  auto& loop = (*stage)->loop();
  const double seconds = context.commandLine.number("--diag-hotkeys").value_or(listeningSeconds);
  const auto keys = combinations(context.commandLine.has("--default-keys"));
  printHeading(context, keys, backends);

  std::array<int, 2> counts{};
  capture::HotKeyManager hotKeys{*backends.hotKeys, capture::KeyNames{backends.keyboardLayout},
                                 loop.poster()};
  hotKeys.onTrigger = [&](Action action) {
    const int count = ++counts.at(static_cast<std::size_t>(action));
    fmt::print(context.out, "  {} 收到（第 {} 次）\n", labelOf(action), count);
    std::fflush(context.out);
  };
  if (const auto failed = hotKeys.registerKeys(keys.zoomIn, keys.zoomOut); !failed.empty()) {
    return refuse(context, failed);
  }
  fmt::print(context.out, "  ✓ 注册成功\n");
  const auto start = std::chrono::steady_clock::now();
  if (context.commandLine.has("--synthesize")) {
    fmt::print(context.out, "  自合成按键中（需本 App 有辅助功能授权）…\n");
    std::fflush(context.out);
    pressBoth(**stage, keys);
  } else {
    fmt::print(context.out, "  请在 {:.0f} 秒内按几下这两个组合（在哪个 App 里按都行）…\n",
               seconds);
    std::fflush(context.out);
  }
  (*stage)->runFor(Seconds{seconds} - (std::chrono::steady_clock::now() - start));
  hotKeys.unregisterAll();

  fmt::print(context.out, "  收到  放大 {} 次   还原 {} 次\n", counts[0], counts[1]);
  if (counts[0] + counts[1] == 0) {
    fmt::print(context.out, "  ✗ 一次都没收到。\n");
    return 1;
  }
  fmt::print(context.out, "  ✓ 全局热键工作正常\n");
  return 0;
}

}  // namespace vesk::app
