// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/portal/PortalShortcuts.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <map>

namespace lorvane {

/// A session bus of its own, gone with this.
class PrivateBus {
 public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    /// A new connection under that name.
    [[nodiscard]] QDBusConnection connect(const QString& name);

 private:
    QProcess daemon_;
    QString address_;
    QStringList names_;
};

/// A desktop portal that does what the test says. Calls are answered at once; requests end as `script` has
/// it.
class ScriptedPortal final : public QDBusVirtualObject {
    Q_OBJECT

 public:
    struct Ending {
        enum class Kind { responds, staysOpen, errs, respondsWrongly };
        Kind kind = Kind::responds;
        uint response = 0;
        QVariantMap results;
    };

    explicit ScriptedPortal(QDBusConnection bus);
    ~ScriptedPortal() override;

    /// Takes the portal's name on the bus, or gives it up.
    void appear();
    void vanish();
    /// The request that stays open ends.
    void respond(uint response, const QVariantMap& results = {});
    void tellShortcut(const QString& signal, const QString& id, const QString& session = {});
    void closeSession();

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

    /// By "Interface.Method", the interface without its prefix.
    std::map<QString, Ending> script;
    std::map<QString, uint> versions{{"GlobalShortcuts", 1}, {"RemoteDesktop", 2}};
    /// Requests have another path than their token says, as old portals have it.
    bool oldPaths = false;
    /// The desktop closes the session after so many keys; 0: never.
    int closeAfterKeys = 0;
    QStringList calls;
    QList<PortalShortcut> lastShortcuts;
    std::map<QString, QVariantMap> lastOptions;
    QString session;

 private:
    void answer(const QDBusMessage& message, const QVariantList& arguments);
    void beginRequest(const QString& call, const QDBusMessage& message);
    void sendResponse(const QString& path, uint response, const QVariantMap& results);

    QDBusConnection bus_;
    QString openRequest_;
};

} // namespace lorvane
