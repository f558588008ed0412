#pragma once

#include <QString>

namespace duomir {

// Tells the person at the desktop that a run nobody watched needs a look, through the desktop's
// notification service (org.freedesktop.Notifications on the session bus). Without a session bus
// or without the service nothing happens, at once: this never waits on anybody.
void notifyDesktop(const QString &summary, const QString &body);

} // namespace duomir
