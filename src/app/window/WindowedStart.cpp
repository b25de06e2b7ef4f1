#include "app/window/WindowedStart.h"

#include <fmt/format.h>

#include <QGuiApplication>
#include <cstdio>
#include <memory>

#include "app/window/GuiSetup.h"
#include "app/window/MainWindow.h"
#include "app/window/QtMessages.h"
#include "app/window/QuitSignals.h"
#include "app/window/SingleInstance.h"
#include "app/window/VeskApp.h"

namespace vesk::app {
namespace {

int fail(const char* message) {
  fmt::print(stderr, "{}\n", message);
  return 1;
}

void followInstance(const SingleInstance& instance, VeskApp& app, MainWindow& window) {
  QObject::connect(&instance, &SingleInstance::startedAgain, &window.window(),
                   [&](const WindowFlags& flags, const QString& token) {
                     app.root().startedAgain(flags);
                     window.bringToFront(token);
                   });
}

int runApplication(const WindowFlags& flags, const SingleInstance& instance,
                   const WindowSurroundings& surroundings) {
  VeskApp app(flags, surroundings.library(), surroundings.openSound());
  const std::unique_ptr<MainWindow> window = MainWindow::create(app);
  if (!window) return fail("无法打开窗口：安装不完整，缺少界面组件。");
  followInstance(instance, app, *window);
  window->show();
  return QGuiApplication::exec();
}

}  // namespace

int runWindow(int& argc, char** argv, const WindowSurroundings& surroundings) {
  const QuitSignals quitSignals;
  chooseGraphics();
  endWithoutScreen();
  const QGuiApplication application(argc, argv);
  sendQtMessagesToLog();
  describeApplication();
  const auto quitting = quitSignals.watch(&QCoreApplication::quit);

  const WindowFlags flags = windowFlags(surroundings.commandLine);
  const SingleInstance instance;
  if (instance.role() == SingleInstance::Role::later) {
    if (instance.handOver(flags)) return 0;
    return fail("Vesk 已在运行，但没有响应。");
  }
  // Without a bus nothing could bring a closed window back.
  QGuiApplication::setQuitOnLastWindowClosed(instance.role() == SingleInstance::Role::unrelated);
  return runApplication(flags, instance, surroundings);
}

}  // namespace vesk::app
