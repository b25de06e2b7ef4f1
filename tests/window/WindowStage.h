#pragma once

#include <gtest/gtest.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/window/MainWindow.h"
#include "app/window/VeskApp.h"
#include "app/window/WindowFlags.h"
#include "editor/PreviewController.h"
#include "editor/TimelineView.h"
#include "package/EditDocument.h"
#include "package/RecordingLibrary.h"
#include "package/TemporaryDirectory.h"
#include "package/UserDefaults.h"
#include "window/GraphicsWatch.h"
#include "window/Hand.h"
#include "window/Until.h"

namespace vesk::app::test {

/// The application's window over a library of the test's own. A graphics driver that objects to
/// something fails the test.
class WindowStage : public testing::Test {
 protected:
  static constexpr double exact = 1e-9;  ///< of what only calculations lie between

  WindowStage();
  ~WindowStage() override;

  /// A copy of a committed take in the library.
  std::filesystem::path putTour() { return put(VESK_SAMPLE_TAKE); }
  std::filesystem::path putMarks() { return put(VESK_MARKS_TAKE); }

  /// Opens the window; returns when it has the keyboard and stands still.
  void start(const WindowFlags& flags);
  /// With a package on the edit page.
  void open(const std::filesystem::path& package);
  /// Ends the application as its user does. What follows from that is the application's own doing.
  void quit();

  VeskApp& application() { return *application_; }
  MainWindow& mainWindow() { return *mainWindow_; }
  QQuickWindow& window() { return mainWindow_->window(); }
  Hand& hand() { return *hand_; }
  editor::PreviewController& session() { return application_->preview(); }
  editor::TimelineView& timeline();

  /// Whether there is such an item that is seen.
  bool isShown(const QString& name) const;
  QQuickItem& item(const QString& name) const;
  /// Where an item's point lies in the scene once all is laid out; without one, its middle.
  QPointF place(const QString& name);
  QPointF place(const QString& name, QPointF point);

  /// The segments of the session, in the order of their starts.
  std::vector<motion::ZoomSegment> segments();
  motion::ZoomSegment segment(std::size_t number) { return segments().at(number); }
  std::string selected() { return timeline().selectedSegmentID().toStdString(); }
  /// The document as it lies in the package.
  std::optional<package::EditDocument> saved(const std::filesystem::path& package) const;

  /// Waits for frames, before which everything comes to its place.
  void layOut();
  /// Counts the frames that the window draws in such a time, and lets nothing else happen.
  int framesIn(std::chrono::milliseconds time);
  /// Waits until the window draws nothing more; whether it comes to that.
  bool comesToRest();

 private:
  std::filesystem::path put(const std::filesystem::path& take);

  package::TemporaryDirectory folder_;
  package::UserDefaults defaults_{folder_ / "defaults.json"};
  std::optional<package::RecordingLibrary> library_;
  std::unique_ptr<VeskApp> application_;
  std::unique_ptr<MainWindow> mainWindow_;
  std::unique_ptr<GraphicsWatch> graphics_;
  std::unique_ptr<Hand> hand_;
};

}  // namespace vesk::app::test
