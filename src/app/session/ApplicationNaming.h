// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/Workspace.h"
#include "platform/linux/x11/DesktopEntries.h"

#include <QByteArray>
#include <QStringList>

namespace lorvane {

/// What the system tells of a running process. Empty where it tells nothing.
struct ProcessTraits {
    /// The base name of the program's file.
    QString program;
    /// The base name of the script, where the program runs one.
    QString script;
    /// The identifier that its sandbox was started by (Flatpak).
    QString sandboxId;
    /// What its control group may name, likeliest first: desktops put each application that they start into
    /// one of its own (systemd, "Desktop environments").
    QStringList scopeIds;
};

/// The application identifiers that a control group may name; none when it is no application's.
[[nodiscard]] QStringList applicationIdsOf(const QByteArray& controlGroup);
[[nodiscard]] ProcessTraits traitsOf(ProcessId process);

/// What the user calls an application that no window tells of: from its process and from the name that it has
/// on the accessibility bus. Main thread.
class ApplicationNaming {
 public:
    explicit ApplicationNaming(DesktopEntries entries) : entries_(std::move(entries)) {}

    [[nodiscard]] RunningApplication name(ProcessId process, const QString& shownName) {
        return nameFrom(process, traitsOf(process), shownName);
    }
    [[nodiscard]] RunningApplication nameFrom(ProcessId process, const ProcessTraits& traits,
                                              const QString& shownName);

 private:
    [[nodiscard]] std::optional<DesktopEntry> find(const ProcessTraits& traits, const QString& shownName);

    DesktopEntries entries_;
};

} // namespace lorvane
