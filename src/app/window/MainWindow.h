#pragma once

#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QString>
#include <memory>

#include "app/window/VeskApp.h"

namespace vesk::app {

/// The one window of the application, over its objects, and what follows for these when the window
/// or the application changes. Main thread.
class MainWindow {
 public:
  /// The window is not shown yet. Null when a part of its content is not installed.
  /// @param app outlives the window.
  static std::unique_ptr<MainWindow> create(VeskApp& app);

  QQuickWindow& window() { return *window_; }

  /// For the first time: at the centre of the screen.
  void show();
  /// Shows the window again, wherever it was, and lets it have the keyboard.
  /// @param token of the desktop, which lets a window come to the front; may be empty.
  void bringToFront(const QString& token);

 private:
  explicit MainWindow(VeskApp& app) : app_(app) {}
  void follow();

  VeskApp& app_;
  QQmlApplicationEngine engine_;
  QQuickWindow* window_ = nullptr;  ///< the engine's
};

}  // namespace vesk::app
