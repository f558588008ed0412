#include "ui/notification.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QVariantMap>

namespace duomir {

namespace {

const QString Service = QStringLiteral("org.freedesktop.Notifications");

} // namespace

void notifyDesktop(const QString &summary, const QString &body)
{
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return; // cron, a plain timer: no session, and looking for one would start a bus
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface() ||
        !bus.interface()->isServiceRegistered(Service).value())
        return;
    QDBusMessage call =
        QDBusMessage::createMethodCall(Service, QStringLiteral("/org/freedesktop/Notifications"),
                                       Service, QStringLiteral("Notify"));
    call << QStringLiteral("Duomir") << 0u << QStringLiteral("duomir") << summary << body
         << QStringList() << QVariantMap() << -1;
    bus.call(call, QDBus::Block, 2000); // a service that hangs costs two seconds, no more
}

} // namespace duomir
