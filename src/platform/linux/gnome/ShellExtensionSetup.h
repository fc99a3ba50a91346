// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QString>

#include <optional>

namespace lorvane {

/// Puts our extension of the GNOME Shell in place for this user, and takes it away again. For a command line:
/// each operation waits for the bus and for `gsettings`, some seconds at most.
class ShellExtensionSetup {
 public:
    enum class State {
        noShell,     ///< no GNOME Shell runs
        unknown,     ///< the shell is of a version that no extension of ours is for
        absent,      ///< nothing is installed
        outdated,    ///< what is installed is not what came with this program, running or not
        afterLogin,  ///< installed and switched on; the shell loads it at the next login
        switchedOff, ///< installed, and switched off by the user
        running,
    };

    /// `source`: the folder with one folder for each shape of the extension; `dataFolder`: that of the user's
    /// data.
    ShellExtensionSetup(QDBusConnection session, QString source, QString dataFolder);

    [[nodiscard]] State state() const;
    /// What went wrong, in plain words; empty when it is in place and switched on.
    [[nodiscard]] QString install();
    /// Switches it off and removes its files. What went wrong, or empty.
    [[nodiscard]] QString remove();

    static const QString uuid;

 private:
    /// "43" of "43.9"; absent when no shell runs.
    [[nodiscard]] std::optional<int> shellVersion() const;
    [[nodiscard]] QString folder() const;
    /// Where the shape for that version of the shell comes from.
    [[nodiscard]] QString sourceFor(int version) const;
    /// The files are those of the source.
    [[nodiscard]] bool isAsIn(const QString& source) const;
    /// Switches it on or off in a running shell that knows it, and in the settings for the next one.
    [[nodiscard]] QString setEnabled(bool enabled);
    [[nodiscard]] bool isRunning() const;

    QDBusConnection session_;
    QString source_;
    QString dataFolder_;
};

} // namespace lorvane
