#pragma once

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <array>
#include <chrono>

namespace vesk::editor::test {

/// The one application object of the test process: without it no timer runs.
inline QCoreApplication& qtApplication() {
  static int argumentCount = 1;
  static std::array<char, 6> name{"tests"};
  static std::array<char*, 2> arguments{name.data(), nullptr};
  static QCoreApplication application(argumentCount, arguments.data());
  return application;
}

/// Lets timers and events happen for so long.
inline void runEvents(std::chrono::milliseconds time) {
  qtApplication();
  QEventLoop loop;
  QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
  loop.exec();
}

}  // namespace vesk::editor::test
