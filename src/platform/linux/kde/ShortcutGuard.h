// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace lorvane {

/// Lets shortcuts of ours go when this process ends without having done it: the service keeps them, and
/// their keys (Escape among them) would reach no application any more. A shell waits for the end of a pipe
/// and then sends the calls, so this works after a crash and a kill. Main thread.
class ShortcutGuard {
 public:
    /// Who has the shortcuts: `names` within `component`. While another process has `programName` on the bus,
    /// which is a later run of the program, they are that one's and stay; `uniqueName` is this process there.
    struct Owner {
        QString component;
        QStringList names;
        QString programName;
        QString uniqueName;
    };
    explicit ShortcutGuard(const Owner& owner);
    /// Stands down: the shortcuts have been let go properly.
    ~ShortcutGuard();
    ShortcutGuard(const ShortcutGuard&) = delete;
    ShortcutGuard& operator=(const ShortcutGuard&) = delete;

    /// False when no shell could be started: a crash would leave the shortcuts behind.
    [[nodiscard]] bool isOnWatch() const { return pipe_ >= 0; }

 private:
    int pipe_ = -1;
};

} // namespace lorvane
