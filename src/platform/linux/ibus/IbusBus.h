// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/ibus/IbusAddress.h"
#include "platform/linux/ibus/IbusLink.h"

#include <QFileSystemWatcher>

#include <memory>

namespace lorvane {

/// The IBus daemon of the session, followed as daemons come and go by the files in which they leave their
/// address; at rest nothing runs. Main thread.
class IbusBus final : public QObject {
 public:
    explicit IbusBus(IbusAddressPlaces places);

    /// A daemon answers.
    [[nodiscard]] bool isConnected() const { return link_ && link_->isConnected(); }
    /// The connection to it; only while `isConnected`.
    [[nodiscard]] IbusLink& link() { return *link_; }
    [[nodiscard]] const QString& address() const { return address_; }
    /// Told when a daemon answers, and when it has gone.
    [[nodiscard]] Handle onChange(std::function<void()> changed) {
        return changed_.subscribe(std::move(changed));
    }

 private:
    void look();
    void watchFolder();
    void linkChanged();
    [[nodiscard]] QString addressNow() const;

    IbusAddressPlaces places_;
    QFileSystemWatcher watcher_;
    QString address_;
    bool wasConnected_ = false;
    std::unique_ptr<IbusLink> link_;
    Handle linkChange_;
    Signal<> changed_;
};

} // namespace lorvane
