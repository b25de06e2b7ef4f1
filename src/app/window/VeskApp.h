#pragma once

#include <QVariantMap>
#include <memory>

#include "app/window/RootView.h"
#include "app/window/WindowFlags.h"
#include "editor/EditorKeys.h"
#include "editor/EditorUIState.h"
#include "editor/EditorView.h"
#include "editor/PreviewController.h"
#include "editor/SoundOutput.h"
#include "editor/StageOverlay.h"
#include "editor/TimelineView.h"
#include "package/RecordingLibrary.h"

namespace vesk::app {

/// The objects that live as long as the application with its window, each made once and shared by
/// the pages. Main thread.
class VeskApp {
 public:
  /// @param library outlives the application.
  VeskApp(const WindowFlags& flags, package::RecordingLibrary& library,
          std::unique_ptr<editor::SoundOutput> sound);

  RootView& root() { return root_; }
  editor::PreviewController& preview() { return preview_; }

  /// The objects under the names by which the window's content asks for them.
  QVariantMap properties();

 private:
  std::unique_ptr<editor::SoundOutput> sound_;
  editor::PreviewController preview_;
  editor::EditorUIState editorUI_;
  editor::EditorView editor_;
  editor::EditorKeys keys_;
  editor::StageOverlay overlay_;
  editor::TimelineView timeline_;
  RootView root_;
};

}  // namespace vesk::app
