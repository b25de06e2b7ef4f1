#include "app/window/WindowedStart.h"

#include <fmt/format.h>

#include <QFont>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlExtensionPlugin>
#include <QQuickWindow>
#include <QScreen>
#include <QSurfaceFormat>
#include <QUrl>
#include <cstdio>
#include <memory>

#include "app/window/QtMessages.h"
#include "app/window/QuitSignals.h"
#include "app/window/SingleInstance.h"
#include "app/window/VeskApp.h"

Q_IMPORT_QML_PLUGIN(Vesk_AppPlugin)
Q_IMPORT_QML_PLUGIN(Vesk_EditorPlugin)
Q_IMPORT_QML_PLUGIN(Vesk_SessionPlugin)
Q_IMPORT_QML_PLUGIN(Vesk_ThemePlugin)
Q_IMPORT_QML_PLUGIN(Vesk_TimelinePlugin)

namespace vesk::app {
namespace {

/// The preview is drawn by the compositor of the export, in OpenGL 4.3, in the window's own
/// context. To be said before the application exists.
void chooseGraphics() {
  if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION")) {
    qputenv("QT_XCB_GL_INTEGRATION", "xcb_egl");
  }
  QSurfaceFormat format;
  format.setVersion(4, 3);
  format.setProfile(QSurfaceFormat::CoreProfile);
  format.setDepthBufferSize(24);
  format.setStencilBufferSize(8);
  QSurfaceFormat::setDefaultFormat(format);
  QQuickWindow::setGraphicsApi(QSGRendererInterface::OpenGL);
}

void describeApplication() {
  QGuiApplication::setApplicationName(QStringLiteral("vesk"));
  QGuiApplication::setApplicationDisplayName(QStringLiteral("Vesk"));
  QGuiApplication::setDesktopFileName(QStringLiteral("com.ordel.vesk"));
  QGuiApplication::setFont(QFont(QStringLiteral("Noto Sans CJK SC")));
}

void placeAtCentre(QQuickWindow& window) {
  const QRect room = window.screen()->availableGeometry();
  window.resize(window.size().boundedTo(room.size()).expandedTo(window.minimumSize()));
  QRect frame({0, 0}, window.size());
  frame.moveCenter(room.center());
  window.setPosition(frame.topLeft());
}

void bringToFront(QQuickWindow& window, const QString& token) {
  // Where the desktop guards the focus, this is the user's leave to take it.
  if (!token.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
  if (window.visibility() == QWindow::Minimized) window.showNormal();
  window.show();
  window.raise();
  window.requestActivate();
}

int fail(const char* message) {
  fmt::print(stderr, "{}\n", message);
  return 1;
}

void followInstance(const SingleInstance& instance, VeskApp& app, QQuickWindow& window) {
  QObject::connect(&instance, &SingleInstance::activated, &window,
                   [&window](const QString& token) { bringToFront(window, token); });
  QObject::connect(&instance, &SingleInstance::opened, &window,
                   [&app](const QString& package) { app.root().open(package.toStdString()); });
}

void followApplication(QGuiApplication& application, VeskApp& app) {
  QObject::connect(&application, &QGuiApplication::applicationStateChanged, &app.root(),
                   [&app](Qt::ApplicationState state) {
                     if (state == Qt::ApplicationActive) app.root().activate();
                   });
  const auto flush = [&app] { app.preview().flushSave(); };
  QObject::connect(&application, &QCoreApplication::aboutToQuit, &app.root(), flush);
  QObject::connect(&application, &QGuiApplication::commitDataRequest, &app.root(), flush,
                   Qt::DirectConnection);
}

void followWindow(QQuickWindow& window, VeskApp& app) {
  // What nobody sees should not be heard.
  QObject::connect(&window, &QWindow::visibleChanged, &app.root(), [&app](bool visible) {
    if (!visible) app.preview().pause();
  });
  QObject::connect(&window, &QQuickWindow::sceneGraphError, &window,
                   [](QQuickWindow::SceneGraphError, const QString& message) {
                     qCritical("%s", qUtf8Printable(message));
                     QCoreApplication::exit(fail("无法打开窗口：显卡驱动不支持 OpenGL。"));
                   });
}

int runApplication(QGuiApplication& application, const WindowFlags& flags,
                   const SingleInstance& instance, const WindowSurroundings& surroundings) {
  VeskApp app(flags, surroundings.library(), surroundings.openSound());
  // Before there is anything to see, so that the window comes up with the recording in it.
  app.root().appear();
  QQmlApplicationEngine engine;
  engine.setInitialProperties(app.properties());
  engine.load(QUrl(QStringLiteral("qrc:/qt-project.org/imports/Vesk/App/MainWindow.qml")));
  auto* const window = engine.rootObjects().isEmpty()
                           ? nullptr
                           : qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());
  if (window == nullptr) return fail("无法打开窗口：安装不完整，缺少界面组件。");

  followInstance(instance, app, *window);
  followApplication(application, app);
  followWindow(*window, app);
  placeAtCentre(*window);
  window->show();
  window->requestActivate();
  return QGuiApplication::exec();
}

}  // namespace

int runWindow(int& argc, char** argv, const WindowSurroundings& surroundings) {
  const QuitSignals quitSignals;
  chooseGraphics();
  endWithoutScreen();
  QGuiApplication application(argc, argv);
  sendQtMessagesToLog();
  describeApplication();
  const auto quitting = quitSignals.watch(&QCoreApplication::quit);

  const WindowFlags flags = windowFlags(surroundings.commandLine);
  const SingleInstance instance;
  if (instance.role() == SingleInstance::Role::later) {
    if (instance.handOver(flags.package)) return 0;
    return fail("Vesk 已在运行，但没有响应。");
  }
  // Without a bus nothing could bring a closed window back.
  QGuiApplication::setQuitOnLastWindowClosed(instance.role() == SingleInstance::Role::unrelated);
  return runApplication(application, flags, instance, surroundings);
}

}  // namespace vesk::app
