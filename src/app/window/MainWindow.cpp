#include "app/window/MainWindow.h"

#include <fmt/format.h>

#include <QGuiApplication>
#include <QQmlExtensionPlugin>
#include <QScreen>
#include <QUrl>
#include <cstdio>

Q_IMPORT_QML_PLUGIN(Vesk_AppPlugin)
Q_IMPORT_QML_PLUGIN(Vesk_EditorPlugin)
Q_IMPORT_QML_PLUGIN(Vesk_SessionPlugin)
Q_IMPORT_QML_PLUGIN(Vesk_ThemePlugin)
Q_IMPORT_QML_PLUGIN(Vesk_TimelinePlugin)

namespace vesk::app {
namespace {

void followApplication(VeskApp& app) {
  QObject::connect(qGuiApp, &QGuiApplication::applicationStateChanged, &app.root(),
                   [&app](Qt::ApplicationState state) {
                     if (state == Qt::ApplicationActive) app.root().activate();
                   });
  const auto flush = [&app] { app.preview().flushSave(); };
  QObject::connect(qGuiApp, &QCoreApplication::aboutToQuit, &app.root(), flush);
  QObject::connect(qGuiApp, &QGuiApplication::commitDataRequest, &app.root(), flush,
                   Qt::DirectConnection);
}

}  // namespace

std::unique_ptr<MainWindow> MainWindow::create(VeskApp& app) {
  // Before there is anything to see, so that the window comes up with the recording in it.
  app.root().appear();
  std::unique_ptr<MainWindow> window(new MainWindow(app));
  window->engine_.setInitialProperties(app.properties());
  window->engine_.load(QUrl(QStringLiteral("qrc:/qt-project.org/imports/Vesk/App/MainWindow.qml")));
  const QList<QObject*> roots = window->engine_.rootObjects();
  if (!roots.isEmpty()) window->window_ = qobject_cast<QQuickWindow*>(roots.constFirst());
  if (window->window_ == nullptr) return nullptr;
  window->follow();
  return window;
}

void MainWindow::follow() {
  followApplication(app_);
  // What nobody sees should not be heard.
  QObject::connect(window_, &QWindow::visibleChanged, &app_.root(), [this](bool visible) {
    if (!visible) app_.preview().pause();
  });
  QObject::connect(window_, &QQuickWindow::sceneGraphError, window_,
                   [](QQuickWindow::SceneGraphError, const QString& message) {
                     qCritical("%s", qUtf8Printable(message));
                     fmt::print(stderr, "无法打开窗口：显卡驱动不支持 OpenGL。\n");
                     QCoreApplication::exit(1);
                   });
}

void MainWindow::show() {
  const QRect room = window_->screen()->availableGeometry();
  window_->resize(window_->size().boundedTo(room.size()).expandedTo(window_->minimumSize()));
  QRect frame({0, 0}, window_->size());
  frame.moveCenter(room.center());
  window_->setPosition(frame.topLeft());
  window_->show();
  window_->requestActivate();
}

void MainWindow::bringToFront(const QString& token) {
  // Where the desktop guards the focus, this is the user's leave to take it.
  if (!token.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
  // Of one that counts as active, as it does also with its window closed, nothing tells.
  const bool isUnnoticed = QGuiApplication::applicationState() == Qt::ApplicationActive;
  // Out of the task bar, and as large as it was: show() would also undo a maximised window.
  window_->setWindowStates(window_->windowStates() & ~Qt::WindowMinimized);
  window_->setVisible(true);
  window_->raise();
  window_->requestActivate();
  if (isUnnoticed) app_.root().activate();
}

}  // namespace vesk::app
