#include "app/window/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QUrl>
#include <QVariantList>
#include <cstdlib>

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

bool SingleInstance::handOver(const std::optional<std::filesystem::path>& package) const {
  QDBusMessage call =
      QDBusMessage::createMethodCall(name(), path(), QStringLiteral("org.freedesktop.Application"),
                                     package ? QStringLiteral("Open") : QStringLiteral("Activate"));
  if (package) {
    const QUrl url = QUrl::fromLocalFile(QString::fromStdString(package->string()));
    call << QStringList{url.toString(QUrl::FullyEncoded)};
  }
  call << ownPlatformData();
  const QDBusMessage answer = QDBusConnection::sessionBus().call(call, QDBus::Block, answerLimit);
  if (answer.type() == QDBusMessage::ReplyMessage) return true;
  package::log(package::LogCategory::app)
      .error("session bus: {}", answer.errorMessage().toStdString());
  return false;
}

void SingleInstance::Activate(const QVariantMap& platformData) {
  Q_EMIT activated(platformData.value(QStringLiteral("activation-token")).toString());
}

void SingleInstance::Open(const QStringList& uris, const QVariantMap& platformData) {
  for (const QString& uri : uris) {
    const QUrl url(uri);
    if (url.isLocalFile()) Q_EMIT opened(url.toLocalFile());
  }
  Activate(platformData);
}

}  // namespace vesk::app
