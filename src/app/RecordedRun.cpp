#include "app/RecordedRun.h"

#include <fmt/format.h>

#include <chrono>
#include <utility>
#include <variant>

namespace vesk::app {
namespace {

namespace state = capture::state;
using Seconds = std::chrono::duration<double>;

bool hasEnded(const capture::RecordingSession& session) {
  return std::holds_alternative<state::Finished>(session.state()) ||
         std::holds_alternative<state::Failed>(session.state());
}

struct NameOfState {
  std::string operator()(const state::Idle&) const { return "idle"; }
  std::string operator()(const state::Preparing&) const { return "preparing"; }
  std::string operator()(const state::Recording&) const { return "recording"; }
  std::string operator()(const state::Finishing&) const { return "finishing"; }
  std::string operator()(const state::Finished& finished) const {
    return "finished(" + finished.url.string() + ")";
  }
  std::string operator()(const state::Failed& failed) const {
    return "failed(" + failed.message + ")";
  }
};

std::unexpected<RunFailure> timedOut() {
  return std::unexpected(RunFailure{.timedOut = true, .message = {}});
}

std::unexpected<RunFailure> failure(std::string message) {
  return std::unexpected(RunFailure{.timedOut = false, .message = std::move(message)});
}

}  // namespace

std::expected<std::filesystem::path, RunFailure> recordRun(CaptureStage& stage,
                                                           const RunPlan& plan) {
  auto& session = stage.session();
  const auto end = std::chrono::steady_clock::now() + Seconds{plan.limit};
  const auto rest = [end] { return Seconds{end - std::chrono::steady_clock::now()}; };

  session.start(plan.order);
  const auto isStarted = [&] {
    return hasEnded(session) || std::holds_alternative<state::Recording>(session.state());
  };
  if (!stage.loop().runUntil(isStarted, rest())) return timedOut();
  if (const auto* const failed = std::get_if<state::Failed>(&session.state())) {
    return failure("启动失败：" + failed->message);
  }
  if (plan.perform) {
    plan.perform(stage);
  } else {
    stage.loop().runUntil([&] { return hasEnded(session); }, Seconds{plan.seconds});
  }
  session.stop();
  if (!stage.loop().runUntil([&] { return hasEnded(session); }, rest())) return timedOut();
  const auto* const finished = std::get_if<state::Finished>(&session.state());
  if (!finished) {
    return failure("停止后状态异常：" + std::visit(NameOfState{}, session.state()));
  }
  return finished->url;
}

int failRun(const CommandContext& context, std::string_view reason) {
  fmt::print(context.out, "  ✗ {}\n", reason);
  return 1;
}

}  // namespace vesk::app
