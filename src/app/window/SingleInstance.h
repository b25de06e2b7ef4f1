#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include "app/window/WindowFlags.h"

namespace vesk::app {

/// Sees to it that one process has the window: the first holds a name on the session bus, under
/// which later ones ask it to do what they were started for, and then end. The methods are those of
/// https://specifications.freedesktop.org/desktop-entry-spec/latest/dbus.html
/// Main thread.
class SingleInstance : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  enum class Role {
    first,      ///< holds the name
    later,      ///< another process holds it
    unrelated,  ///< there is no bus to find another process by
  };

  /// Takes the name, if it is free.
  explicit SingleInstance(QObject* parent = nullptr);

  Role role() const { return role_; }

  /// Asks the first process to come to the front and to do what this one was started for. False
  /// when it does not answer.
  [[nodiscard]] bool handOver(const WindowFlags& flags) const;

 public Q_SLOTS:
  // Called over the bus.
  Q_SCRIPTABLE void Activate(const QVariantMap& platformData);  // NOLINT: named by the bus
  Q_SCRIPTABLE void Open(const QStringList& uris,               // NOLINT: named by the bus
                         const QVariantMap& platformData);

 Q_SIGNALS:
  /// Another process, or the desktop, started the application again.
  /// @param token of the desktop, which lets a window come to the front; may be empty.
  void startedAgain(const vesk::app::WindowFlags& flags, const QString& token);

 private:
  Role role_;
};

}  // namespace vesk::app
