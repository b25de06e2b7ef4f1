#pragma once

#include <QObject>
#include <QQuickWindow>
#include <mutex>
#include <string>
#include <vector>

namespace vesk::app::test {

/// Keeps what the graphics driver objects to while a window draws. What Qt asks of the driver while
/// it starts is its own affair. Needs a debug context. Outlives the window, which may complain up
/// to its end.
class GraphicsWatch : public QObject {
 public:
  explicit GraphicsWatch(QQuickWindow& window);

  /// Errors and warnings so far.
  std::vector<std::string> messages() const;
  /// Whether the driver has been listened to at all.
  bool hasListened() const;

  void keep(std::string message);

 private:
  void listen();

  mutable std::mutex mutex_;
  std::vector<std::string> messages_;
  bool hasListened_ = false;
};

}  // namespace vesk::app::test
