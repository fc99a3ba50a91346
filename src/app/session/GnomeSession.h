// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/session/SeatKeymap.h"
#include "app/session/SessionPorts.h"
#include "platform/linux/chords/ChordEditingKeys.h"
#include "platform/linux/chords/ChordPasteKeys.h"
#include "platform/linux/gnome/RemoteDesktopKeys.h"
#include "platform/linux/gnome/ShellExtensionFocus.h"
#include "platform/linux/gnome/ShellExtensionHoldRoad.h"
#include "platform/linux/ibus/IbusPoster.h"

namespace lorvane {

/// What the GNOME session gives, and IBus wherever it runs. Made in every Wayland session: each road says for
/// itself whether it is open. Main thread.
class GnomeSession {
 public:
    explicit GnomeSession(const SessionParts& parts);

    [[nodiscard]] SessionPorts ports();
    [[nodiscard]] std::optional<WindowIdentity> activeWindow() const { return focus_.active(); }

 private:
    [[nodiscard]] ChordFacts chordFacts() const;
    [[nodiscard]] std::vector<int> pasteChordFor(PasteRoute route) const;
    [[nodiscard]] QString obstacleOfKeys() const;

    SeatKeymap keymap_;
    RemoteDesktopKeys keys_;
    ShellExtensionHoldRoad hold_;
    ShellExtensionFocus focus_;
    ChordEditingKeys editingKeys_;
    ChordPasteKeys pasteKeys_;
    IbusPoster inputMethod_;
};

} // namespace lorvane
