#include "app/window/GuiSetup.h"

#include <QFont>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QSurfaceFormat>

namespace vesk::app {

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

}  // namespace vesk::app
