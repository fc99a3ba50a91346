// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>

namespace lorvane {

/// Which keys KWin shows to the programs of its X server while another window has the keyboard.
enum class XKeySight {
    none,
    modifiers, ///< Ctrl, Alt and Shift, and not every release of them
    everything,
};

/// The user's choice of that: kwinrc, group Xwayland, key XwaylandEavesdrops (System Settings, Legacy X11 App
/// Support). KWin has no question for what it does, so the setting is taken for it, and read anew when KDE's
/// programs tell KWin of it. Main thread.
class KwinKeySight final : public QObject {
    Q_OBJECT

 public:
    /// `files`: the settings, the user's own first.
    explicit KwinKeySight(QDBusConnection session, QStringList files = settingsFiles());

    [[nodiscard]] static QStringList settingsFiles();

    [[nodiscard]] XKeySight sight() const { return sight_; }
    [[nodiscard]] Handle onChange(std::function<void()> changed) {
        return changed_.subscribe(std::move(changed));
    }

 private Q_SLOTS:
    void look();

 private:
    [[nodiscard]] XKeySight read() const;

    QDBusConnection session_;
    QStringList files_;
    XKeySight sight_;
    Signal<> changed_;
};

} // namespace lorvane
