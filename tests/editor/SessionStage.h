#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "editor/PreviewController.h"
#include "editor/QtApplication.h"
#include "editor/SoundOutput.h"
#include "package/RecordedEvent.h"
#include "package/RecordingLibrary.h"
#include "package/RecordingMeta.h"
#include "package/TemporaryDirectory.h"
#include "package/UserDefaults.h"

namespace vesk::editor::test {

/// A sound output that a test moves by hand.
class HandOutput : public SoundOutput {
 public:
  double heardSeconds = 0;  ///< what heard() gives in a run
  int starts = 0;
  Fill fill;  ///< empty without a run

  void start(Fill filling) override {
    fill = std::move(filling);
    heardSeconds = 0;
    ++starts;
  }
  void stop() override { fill = nullptr; }
  double heard(media::HostTime /*now*/) const override { return fill ? heardSeconds : 0; }
  bool isAudible() const override { return true; }
};

inline package::RecordedEvent clickAt(double t, double x = 0.5, double y = 0.5) {
  package::RecordedEvent event;
  event.t = t;
  event.type = package::RecordedEvent::Kind::click;
  event.button = package::RecordedEvent::Button::left;
  event.x = x;
  event.y = y;
  return event;
}

inline package::RecordedEvent markAt(double t, package::RecordedEvent::Kind kind, double x = 0.5,
                                     double y = 0.5) {
  package::RecordedEvent event = clickAt(t, x, y);
  event.type = kind;
  event.button.reset();
  return event;
}

/// Sessions over a library of their own, whose clocks stand still until a test moves them.
class Sessions {
 public:
  Sessions();

  /// Writes a package into the library. Its name sorts as recordings' names do.
  std::filesystem::path putTake(const std::string& name,
                                const std::vector<package::RecordedEvent>& events,
                                double duration = 20, const package::RecordingMeta& base = {});

  /// A take from which the inference makes two segments.
  std::filesystem::path putMarkedTake(const std::string& name = "录制 2026-11-21 10.00.00");

  std::filesystem::path library() const { return folder.path() / "library"; }

  std::unique_ptr<PreviewController> makeSession();

  /// The times of the segments, "start-end" one after the other.
  static std::string times(const PreviewController& session);

  package::TemporaryDirectory folder;
  std::chrono::nanoseconds hostTime{std::chrono::seconds(100)};
  std::chrono::system_clock::time_point wallClock{std::chrono::milliseconds(1'795'000'000'123)};
  HandOutput sound;

 private:
  package::UserDefaults defaults_;
  std::optional<package::RecordingLibrary> library_;
};

class SessionStage : public testing::Test, protected Sessions {};

}  // namespace vesk::editor::test
