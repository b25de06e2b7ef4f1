#include "app/window/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QUrl>
#include <QVariantList>
#include <cstdlib>
#include <string>
#include <vector>

#include "package/Log.h"

namespace vesk::app {
namespace {

const QString& name() {
  static const QString name = QStringLiteral("com.ordel.vesk");
  return name;
}

const QString& path() {
  static const QString path = QStringLiteral("/com/ordel/vesk");
  return path;
}

constexpr int answerLimit = 10'000;  ///< milliseconds; the other process may be opening a package

/// The desktop's leave to come to the front, which it gave to the later process.
QVariantMap ownPlatformData() {
  QVariantMap data;
  const auto pass = [&data](const char* variable, const QString& key) {
    if (const QString value = qEnvironmentVariable(variable); !value.isEmpty()) data[key] = value;
  };
  pass("XDG_ACTIVATION_TOKEN", QStringLiteral("activation-token"));
  pass("DESKTOP_STARTUP_ID", QStringLiteral("desktop-startup-id"));
  return data;
}

/// Of the platform data: what a later process was started with.
const QString& argumentsKey() {
  static const QString key = QStringLiteral("x-vesk-arguments");
  return key;
}

QStringList argumentsOf(const WindowFlags& flags) {
  QStringList texts;
  for (const std::string& argument : arguments(flags)) {
    texts.append(QString::fromStdString(argument));
  }
  return texts;
}

WindowFlags flagsIn(const QVariantMap& platformData) {
  std::vector<std::string> texts;
  for (const QString& argument : platformData.value(argumentsKey()).toStringList()) {
    texts.push_back(argument.toStdString());
  }
  std::vector<const char*> pointers;
  pointers.reserve(texts.size());
  for (const std::string& text : texts) pointers.push_back(text.c_str());
  return windowFlags(CommandLine(pointers));
}

QString tokenIn(const QVariantMap& platformData) {
  return platformData.value(QStringLiteral("activation-token")).toString();
}

SingleInstance::Role takeName(QDBusConnection& bus) {
  if (!bus.isConnected()) return SingleInstance::Role::unrelated;
  const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
      bus.interface()->registerService(name(), QDBusConnectionInterface::DontQueueService,
                                       QDBusConnectionInterface::DontAllowReplacement);
  if (!reply.isValid()) {
    package::log(package::LogCategory::app)
        .error("session bus: {}", reply.error().message().toStdString());
    return SingleInstance::Role::unrelated;
  }
  return reply.value() == QDBusConnectionInterface::ServiceRegistered ? SingleInstance::Role::first
                                                                      : SingleInstance::Role::later;
}

}  // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  // The object stands before its name can be found.
  if (bus.isConnected()) bus.registerObject(path(), this, QDBusConnection::ExportScriptableSlots);
  role_ = takeName(bus);
}

bool SingleInstance::handOver(const WindowFlags& flags) const {
  QVariantMap data = ownPlatformData();
  data[argumentsKey()] = argumentsOf(flags);
  QDBusMessage call = QDBusMessage::createMethodCall(
      name(), path(), QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"));
  call << data;
  const QDBusMessage answer = QDBusConnection::sessionBus().call(call, QDBus::Block, answerLimit);
  if (answer.type() == QDBusMessage::ReplyMessage) return true;
  package::log(package::LogCategory::app)
      .error("session bus: {}", answer.errorMessage().toStdString());
  return false;
}

void SingleInstance::Activate(const QVariantMap& platformData) {
  Q_EMIT startedAgain(flagsIn(platformData), tokenIn(platformData));
}

void SingleInstance::Open(const QStringList& uris, const QVariantMap& platformData) {
  WindowFlags flags = flagsIn(platformData);
  // There is one session: of several packages the last one stays open.
  for (const QString& uri : uris) {
    const QUrl url(uri);
    if (url.isLocalFile()) flags.package = url.toLocalFile().toStdString();
  }
  Q_EMIT startedAgain(flags, tokenIn(platformData));
}

}  // namespace vesk::app
