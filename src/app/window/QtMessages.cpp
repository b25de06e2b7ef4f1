#include "app/window/QtMessages.h"

#include <fmt/format.h>

#include <QString>
#include <QtGlobal>
#include <cstdio>
#include <cstdlib>

#include "package/Log.h"

namespace vesk::app {
namespace {

spdlog::level::level_enum logLevel(QtMsgType type) {
  switch (type) {
    case QtDebugMsg:
      return spdlog::level::debug;
    case QtInfoMsg:
      return spdlog::level::info;
    case QtWarningMsg:
      return spdlog::level::warn;
    case QtCriticalMsg:
    case QtFatalMsg:
      break;
  }
  return spdlog::level::err;
}

void logMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
  package::log(package::LogCategory::app).log(logLevel(type), "Qt: {}", text.toStdString());
}

void logOrEnd(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (type != QtFatalMsg) return logMessage(type, context, text);
  // The user reads what follows; why Qt found no screen is for whoever wants to know.
  logMessage(QtInfoMsg, context, text);
  fmt::print(stderr,
             "无法打开窗口：没有可用的图形桌面。请在桌面会话里启动 Vesk，或改用命令行功能。\n");
  // Nothing of ours stands yet that would have to be put in order.
  std::_Exit(1);
}

}  // namespace

void sendQtMessagesToLog() {
  qInstallMessageHandler(logMessage);
}

void endWithoutScreen() {
  qInstallMessageHandler(logOrEnd);
}

}  // namespace vesk::app
