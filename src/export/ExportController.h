#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "compositor/CompositeSettings.h"
#include "compositor/PreviewRenderer.h"
#include "export/ExportSettings.h"
#include "export/ExportState.h"
#include "export/MovieExport.h"
#include "package/ChangeSignal.h"
#include "package/RecordingProject.h"

namespace vesk::exporting {

/// Stands between the user and an export: asks where to save, freezes the settings, runs the export
/// on a thread of its own, shows how far it is and how it ended, and can cancel it. One lives for
/// the whole run of the application. To be used on the main thread.
class ExportController {
 public:
  /// What the panel that asks for a file name is to show. It allows new folders to be made.
  struct SaveRequest {
    std::string title;
    std::string suggestedName;
    bool operator==(const SaveRequest&) const = default;
  };
  /// The chosen file, or nothing when the user has changed their mind.
  using SavePanel = std::function<std::optional<std::filesystem::path>(const SaveRequest&)>;
  /// Called on the export's thread; null when the machine cannot draw.
  using MakeExport = std::function<std::unique_ptr<MovieExport>(
      std::shared_ptr<const package::RecordingProject>, compositor::CompositeSettings)>;
  /// Calls a function on the main thread, later. May be called from any thread.
  using PostToMain = std::function<void(std::function<void()>)>;

  ExportController(SavePanel savePanel, MakeExport makeExport, PostToMain postToMain);
  ExportController(const ExportController&) = delete;
  ExportController& operator=(const ExportController&) = delete;
  /// Cancels a running export and waits for its end.
  ~ExportController();

  /// The panel's choice. An export runs with the choice at its start, whatever is chosen meanwhile.
  ExportSettings settings;

  const ExportState& state() const { return state_; }
  /// Observes the state.
  package::ChangeSignal::Subscription onChange(package::ChangeSignal::Observer observer);

  /// Asks for a file and exports `project` as `renderer` shows it now. Does nothing while an export
  /// runs.
  void start(std::shared_ptr<const package::RecordingProject> project,
             const compositor::PreviewRenderer& renderer);

  /// Asks the running export to end. The state follows when it has.
  void cancel();

  /// Back to `idle` after an export has ended.
  void reset();

 private:
  class Task;

  void run(const std::shared_ptr<Task>& task) const;
  void report(const std::shared_ptr<Task>& task, ExportState state) const;
  void apply(const std::shared_ptr<Task>& task, ExportState state);
  void setState(ExportState state);

  SavePanel savePanel_;
  MakeExport makeExport_;
  PostToMain postToMain_;
  ExportState state_ = state::Idle{};
  package::ChangeSignal changed_;
  std::shared_ptr<Task> task_;  ///< the running export
  /// What the main thread still has to hear finds the controller by this, or finds it gone.
  std::shared_ptr<ExportController*> self_ = std::make_shared<ExportController*>(this);
  std::jthread thread_;
};

}  // namespace vesk::exporting
