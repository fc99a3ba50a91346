// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/GnomeSession.h"

#include "app/ControlNames.h"
#include "app/session/EngineInPreferences.h"
#include "base/PreferenceCatalogue.h"
#include "platform/linux/x11/PasteChord.h"

namespace lorvane {

namespace {

/// X counts keys from here, Linux input events from 0.
constexpr int firstKey = 8;

ShellExtensionHoldRoad::Options holdOptions(Preferences& preferences, RemoteDesktopKeys& keys) {
    ShellExtensionHoldRoad::Options options;
    options.programName = control::serviceName;
    options.extraKey = [&preferences]() -> std::optional<int> {
        const auto key = extraKeyFromName(preferences.get(preference::extraKey));
        return key ? std::optional(*key - firstKey) : std::nullopt;
    };
    options.isPosting = [&keys] { return keys.isPosting(); };
    return options;
}

} // namespace

GnomeSession::GnomeSession(const SessionParts& parts)
    : keymap_(parts.wayland, parts.seat), keys_(parts.bus, parts.foundation.clock, parts.foundation.log),
      hold_(parts.bus, parts.foundation.clock, holdOptions(parts.foundation.preferences, keys_)),
      focus_(parts.bus, control::serviceName), editingKeys_(keys_, parts.foundation.clock, chordFacts()),
      pasteKeys_(keys_, parts.foundation.clock, chordFacts()),
      inputMethod_(parts.foundation.clock, parts.foundation.log,
                   engineInPreferences(parts.foundation.preferences)) {}

ChordFacts GnomeSession::chordFacts() const {
    return {[this] { return hold_.modifierFlags(); },
            [this](PasteRoute route) { return pasteChordFor(route); }};
}

std::vector<int> GnomeSession::pasteChordFor(PasteRoute route) const {
    const XkbKeymap keymap = keymap_.read();
    std::vector<int> chord;
    if (keymap) {
        for (const XKeyCode key : pasteChord(keymap.get(), 0, route)) {
            chord.push_back(key - firstKey);
        }
    }
    return chord;
}

QString GnomeSession::obstacleOfKeys() const {
    return keys_.isOffered() ? QString()
                             : QStringLiteral("there is no GNOME Shell that takes keys from programs");
}

SessionPorts GnomeSession::ports() {
    const QString remoteDesktop = QStringLiteral("remote desktop session");
    const auto obstacleOfKeys = [this] { return this->obstacleOfKeys(); };
    SessionPorts ports;
    ports.holdRoads = {&hold_};
    ports.posters = {{&inputMethod_, inputMethod_.name(), [this] {
                          return inputMethod_.isConnected()
                                     ? QString()
                                     : QStringLiteral("the input method IBus is not running");
                      }}};
    ports.editingKeys = {{&editingKeys_, remoteDesktop, obstacleOfKeys}};
    ports.pasteKeys = {{&pasteKeys_, remoteDesktop, obstacleOfKeys}};
    return ports;
}

} // namespace lorvane
