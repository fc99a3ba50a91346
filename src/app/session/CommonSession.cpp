// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/CommonSession.h"

#include "platform/linux/x11/PasteChord.h"

#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

/// X key codes are the codes of Linux input events and 8.
constexpr int xOffset = 8;

} // namespace

// The portal tells no modifiers, and a compositor only whoever has the focus: what the user holds while keys
// are posted by the portal is known where key devices are read, and elsewhere taken for nothing.
CommonSession::CommonSession(const SessionParts& parts)
    : evdev_(parts.foundation, devices_), portalKeys_(parts.foundation, parts.bus),
      portalKeyboard_(parts.foundation, parts.bus), layout_(parts.display),
      paste_(portalKeyboard_, parts.foundation.clock, chordFacts()),
      editing_(portalKeyboard_, parts.foundation.clock, chordFacts()) {}

ChordFacts CommonSession::chordFacts() {
    return {[this] { return evdev_.heldModifiers(); },
            [this](PasteRoute route) { return pasteChordOn(route); }};
}

// The devices come first: who has switched them on wants the keys that the portal has not.
SessionPorts CommonSession::ports() {
    const auto name = QStringLiteral("desktop portal");
    const auto obstacle = [this] { return portalKeyboard_.obstacle(); };
    SessionPorts ports;
    ports.holdRoads = {&evdev_, &portalKeys_};
    ports.editingKeys = {{&editing_, name, obstacle}};
    ports.pasteKeys = {{&paste_, name, obstacle}};
    return ports;
}

std::vector<int> CommonSession::pasteChordOn(PasteRoute route) {
    const auto moment = layout_.canPost() ? layout_.moment() : std::nullopt;
    std::vector<int> codes;
    if (moment) {
        for (const XKeyCode key : pasteChord(layout_.keymap(), moment->group, route)) {
            codes.push_back(key - xOffset);
        }
    }
    return codes.empty() ? std::vector<int>{KEY_LEFTSHIFT, KEY_INSERT} : codes;
}

} // namespace lorvane
