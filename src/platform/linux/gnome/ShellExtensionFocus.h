// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/WindowIdentity.h"
#include "platform/linux/gnome/BusName.h"

#include <optional>

namespace lorvane {

/// Whose window has the keyboard, as our extension of the GNOME Shell tells it: from the moment at which both
/// it and the name by which it knows us are on the bus. An extension that is older than this knows of no
/// windows and is told nothing more. Main thread; nothing waits for the bus.
class ShellExtensionFocus final : public QObject {
    Q_OBJECT

 public:
    /// `programName`: the name by which the extension knows us.
    ShellExtensionFocus(QDBusConnection session, const QString& programName);
    ~ShellExtensionFocus() override;

    /// As last told; nothing when no window has the keyboard, or when nobody tells.
    [[nodiscard]] std::optional<WindowIdentity> active() const { return active_; }

 private Q_SLOTS:
    void focusMoved(const QString& windowClass, const QString& sandboxedApplication, uint process);

 private:
    [[nodiscard]] bool canWatch() const;
    void ownerChanged();

    QDBusConnection session_;
    std::optional<WindowIdentity> active_;
    BusName extension_;
    BusName program_;
};

} // namespace lorvane
