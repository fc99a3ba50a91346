// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/setup/SetupWorld.h"
#include "base/Foundation.h"

#include <QDBusConnection>

namespace lorvane {

/// This machine.
class DiskSetupWorld final : public SetupWorld {
 public:
    DiskSetupWorld(const Foundation& foundation, QDBusConnection session)
        : foundation_(foundation), session_(std::move(session)) {}

    [[nodiscard]] Result<std::optional<QByteArray>, QString> read(const QString& path) const override;
    [[nodiscard]] QStringList foldersToMake(const QString& path) const override;
    bool write(const QString& path, const QByteArray& content) override;
    bool remove(const QString& path, const QStringList& folders) override;
    std::optional<QByteArray> run(const QStringList& command) override;
    QString placeShellExtension(bool wanted) override;
    void switchDevices(bool on) override;
    /// Runs the event loop until the user has answered.
    bool askPortal(bool allow) override;

 private:
    Foundation foundation_;
    QDBusConnection session_;
};

} // namespace lorvane
