// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "base/Task.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QObject>

namespace lorvane {

/// One connection to the private bus of an IBus daemon; it ends with this. Main thread; nothing here waits:
/// even the greeting is a call like any other, so that a daemon that hangs holds nobody up.
class IbusLink final : public QObject {
    Q_OBJECT

 public:
    /// `served`: what the daemon reaches below its own path in this process; none when null.
    explicit IbusLink(const QString& address, QDBusVirtualObject* served = nullptr);
    ~IbusLink() override;

    /// The daemon has answered.
    [[nodiscard]] bool isConnected() const { return isConnected_; }
    /// It could not be reached, or has gone.
    [[nodiscard]] bool isLost() const { return isLost_; }
    /// Told when one of the two has changed; not of what the constructor finds.
    [[nodiscard]] Handle onChange(std::function<void()> changed) {
        return changed_.subscribe(std::move(changed));
    }
    /// A call to the daemon's main object.
    [[nodiscard]] Completion<QDBusMessage> call(const QString& method, const QVariantList& arguments,
                                                Duration bound);
    /// A property of that object.
    [[nodiscard]] Completion<QDBusMessage> property(const QString& name, Duration bound);
    void send(const QDBusMessage& message) { connection_.send(message); }
    /// Signals of this interface and name are given to the slot of the receiver, whoever they are for.
    void follow(const QString& interface, const QString& member, QObject* receiver, const char* slot);

 private Q_SLOTS:
    void lose();

 private:
    void greet();
    [[nodiscard]] Completion<QDBusMessage> send(QDBusMessage message, const QVariantList& arguments,
                                                Duration bound);

    QString name_;
    QDBusConnection connection_;
    bool isConnected_ = false;
    bool isLost_ = false;
    Signal<> changed_;
};

} // namespace lorvane
