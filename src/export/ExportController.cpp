#include "export/ExportController.h"

#include <exception>
#include <mutex>
#include <utility>

namespace vesk::exporting {
namespace {

namespace fs = std::filesystem;
using state::Cancelled;
using state::Exporting;
using state::Failed;
using state::Finished;
using state::Idle;

std::string suggestedName(const package::RecordingProject& project, ExportSettings::Format format) {
  const fs::path name = (project.url / "").parent_path().stem();
  return name.string() + (format == ExportSettings::Format::mp4 ? ".mp4" : ".mov");
}

Failed failed(std::string text) {
  return {text.empty() ? "导出失败" : std::move(text)};
}

ExportState endOf(const std::expected<void, ExportError>& outcome, const fs::path& to) {
  if (outcome) return Finished{to};
  if (outcome.error().kind == ExportError::Kind::cancelled) return Cancelled{};
  return failed(outcome.error().description());
}

}  // namespace

/// One export: what it was started with, and the way to cancel it.
class ExportController::Task {
 public:
  struct Order {
    std::weak_ptr<ExportController*> controller;
    std::shared_ptr<const package::RecordingProject> project;
    compositor::CompositeSettings look;
    ExportSettings settings;
    fs::path to;
  };

  explicit Task(Order placed) : order(std::move(placed)) {}

  /// Lets the export be cancelled while the guard lives; a cancellation that came before counts.
  class Running {
   public:
    Running(Task& task, MovieExport& movieExport) : task_(task) {
      const std::scoped_lock lock(task_.mutex_);
      task_.running_ = &movieExport;
      if (task_.cancelled_) movieExport.cancel();
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
    ~Running() {
      const std::scoped_lock lock(task_.mutex_);
      task_.running_ = nullptr;
    }

   private:
    Task& task_;
  };

  void cancel() {
    const std::scoped_lock lock(mutex_);
    cancelled_ = true;
    if (running_ != nullptr) running_->cancel();
  }

  const Order order;

 private:
  std::mutex mutex_;
  MovieExport* running_ = nullptr;
  bool cancelled_ = false;
};

ExportController::ExportController(SavePanel savePanel, MakeExport makeExport,
                                   PostToMain postToMain)
    : savePanel_(std::move(savePanel)),
      makeExport_(std::move(makeExport)),
      postToMain_(std::move(postToMain)) {}

ExportController::~ExportController() {
  self_.reset();
  cancel();
}

package::ChangeSignal::Subscription ExportController::onChange(
    package::ChangeSignal::Observer observer) {
  return changed_.subscribe(std::move(observer));
}

void ExportController::start(std::shared_ptr<const package::RecordingProject> project,
                             const compositor::PreviewRenderer& renderer) {
  if (task_) return;
  const auto to =
      savePanel_({.title = "导出视频", .suggestedName = suggestedName(*project, settings.format)});
  // The panel lets the main thread go on, so that another start may have come first.
  if (!to || task_) return;
  task_ = std::make_shared<Task>(Task::Order{.controller = self_,
                                             .project = std::move(project),
                                             .look = renderer.settings,
                                             .settings = settings,
                                             .to = *to});
  thread_ = std::jthread([this, task = task_] { run(task); });
}

void ExportController::cancel() {
  if (task_) task_->cancel();
}

void ExportController::reset() {
  if (!task_) setState(Idle{});
}

/// The export's thread: from the clone to the finished movie.
void ExportController::run(const std::shared_ptr<Task>& task) const {
  try {
    const auto movieExport = makeExport_(task->order.project, task->order.look);
    if (!movieExport) {
      report(task, Failed{"无法创建导出渲染器"});
      return;
    }
    const Task::Running running(*task, *movieExport);
    report(task, Exporting{0});
    const auto outcome =
        movieExport->run(task->order.settings, task->order.to,
                         [&](double progress) { report(task, Exporting{progress}); });
    report(task, endOf(outcome, task->order.to));
  } catch (const std::exception& error) {
    report(task, failed(error.what()));
  }
}

void ExportController::report(const std::shared_ptr<Task>& task, ExportState state) const {
  postToMain_([task, state = std::move(state)] {
    if (const auto controller = task->order.controller.lock()) (*controller)->apply(task, state);
  });
}

void ExportController::apply(const std::shared_ptr<Task>& task, ExportState state) {
  // What comes from an export that has ended comes too late.
  if (task != task_) return;
  if (!std::holds_alternative<Exporting>(state)) task_.reset();
  setState(std::move(state));
}

void ExportController::setState(ExportState state) {
  if (state == state_) return;
  state_ = std::move(state);
  changed_.notify();
}

}  // namespace vesk::exporting
