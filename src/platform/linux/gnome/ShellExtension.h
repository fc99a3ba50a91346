// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusMessage>
#include <QString>

/// Our extension of the GNOME Shell on the session bus (packaging/gnome-shell-extension/shell-keys.js).
namespace lorvane::shellExtension {

inline const QString service = QStringLiteral("com.ostrand.tirra.ShellKeys");
inline const QString object = QStringLiteral("/com/ostrand/tirra/ShellKeys");
inline const QString interface = QStringLiteral("com.ostrand.tirra.ShellKeys1");

/// A call of the extension that runs, which starts none.
[[nodiscard]] inline QDBusMessage call(const QString& method, const QVariantList& arguments = {}) {
    auto message = QDBusMessage::createMethodCall(service, object, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return message;
}

} // namespace lorvane::shellExtension
