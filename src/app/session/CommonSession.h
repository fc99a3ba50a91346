// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/session/SessionPorts.h"
#include "platform/linux/chords/ChordEditingKeys.h"
#include "platform/linux/chords/ChordPasteKeys.h"
#include "platform/linux/evdev/EvdevHoldRoad.h"
#include "platform/linux/evdev/InputFolder.h"
#include "platform/linux/portal/PortalHoldRoad.h"
#include "platform/linux/portal/PortalKeyboard.h"
#include "platform/linux/x11/PostingKeyboard.h"

namespace lorvane {

/// What any desktop may have, after what is its own: the desktop portal, and key devices read directly. Made
/// in every Wayland session: each road says for itself whether it is open. Main thread.
class CommonSession {
 public:
    explicit CommonSession(const SessionParts& parts);

    [[nodiscard]] SessionPorts ports();

 private:
    [[nodiscard]] ChordFacts chordFacts();
    /// By the layout that XWayland has of the compositor; without it, by keys that have one place on every
    /// layout.
    [[nodiscard]] std::vector<int> pasteChordOn(PasteRoute route);

    InputFolder devices_;
    EvdevHoldRoad evdev_;
    PortalHoldRoad portalKeys_;
    PortalKeyboard portalKeyboard_;
    PostingKeyboard layout_;
    ChordPasteKeys paste_;
    ChordEditingKeys editing_;
};

} // namespace lorvane
