// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "base/Task.h"
#include "platform/linux/ibus/IbusAddress.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QFileSystemWatcher>
#include <QObject>

#include <functional>

namespace lorvane {

/// The connection to the private bus of the IBus daemon, followed as daemons come and go (by the files in
/// which they leave their address; at rest nothing runs). Main thread; nothing here waits: even the greeting
/// is a call like any other, so that a daemon that hangs holds nobody up.
class IbusBus final : public QObject {
    Q_OBJECT

 public:
    /// `served`: what the daemon reaches below its own path in this process. It outlives the connection.
    IbusBus(IbusAddressPlaces places, QDBusVirtualObject& served);
    ~IbusBus() override;

    /// The daemon has answered.
    [[nodiscard]] bool isConnected() const { return isConnected_; }
    [[nodiscard]] Handle onChange(std::function<void()> changed) {
        return changed_.subscribe(std::move(changed));
    }
    /// A call to the daemon's main object; bounded by `bound`. An error when there is no connection.
    [[nodiscard]] Completion<QDBusMessage> call(const QString& method, const QVariantList& arguments,
                                                Duration bound);
    void send(const QDBusMessage& message);
    /// Signals of this interface and name are given to the slot of the receiver, whoever they are for.
    void follow(const QString& interface, const QString& member, QObject* receiver, const char* slot);

 private Q_SLOTS:
    void lost();

 private:
    void look();
    void watchFolder();
    void open(const QString& address);
    void greet();
    void close();
    [[nodiscard]] QString addressNow() const;
    [[nodiscard]] Completion<QDBusMessage> callOn(const QString& service, const QString& path,
                                                  const QString& interface, const QString& method,
                                                  const QVariantList& arguments, Duration bound);

    IbusAddressPlaces places_;
    QDBusVirtualObject& served_;
    QString connectionName_;
    QDBusConnection connection_;
    QString openAddress_;
    bool isConnected_ = false;
    QFileSystemWatcher watcher_;
    Signal<> changed_;
};

} // namespace lorvane
