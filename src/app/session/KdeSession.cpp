// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/KdeSession.h"

#include "platform/linux/x11/PasteChord.h"

namespace lorvane {

namespace {

/// An X key code is that of Linux input events and this.
constexpr std::uint32_t xOffset = 8;

} // namespace

KdeSession::KdeSession(const SessionParts& parts)
    : words_(parts.foundation.words), input_(parts.wayland, parts.foundation.clock), windows_(parts.wayland),
      keymap_(parts.wayland, parts.seat), layout_(parts.bus),
      shortcuts_(parts.bus, parts.foundation, [this] { return input_.isPosting(); }),
      pasteKeys_(input_, parts.foundation.clock, keyboard()), editingKeys_(input_, keyboard()),
      helper_(parts.foundation.clock, parts.foundation.log, HelperLink::standardPath()),
      inputMethod_(helper_) {}

SessionPorts KdeSession::ports() {
    SessionPorts ports;
    ports.holdRoads = {&shortcuts_};
    ports.posters = {{&inputMethod_, inputMethod_.name(), [this] { return helperObstacle(); }}};
    const auto fakeInput = [this] { return fakeInputObstacle(); };
    ports.editingKeys = {{&editingKeys_, QStringLiteral("KWin fake input"), fakeInput}};
    ports.pasteKeys = {{&pasteKeys_, QStringLiteral("KWin fake input"), fakeInput}};
    return ports;
}

KdeKeyboard KdeSession::keyboard() {
    return {[this] { return shortcuts_.heldModifiers(); },
            [this](PasteRoute route) { return chordFor(route); }};
}

std::vector<std::uint32_t> KdeSession::chordFor(PasteRoute route) const {
    std::vector<std::uint32_t> codes;
    if (const XkbKeymap keymap = keymap_.read()) {
        for (const XKeyCode key : pasteChord(keymap.get(), layout_.group(), route)) {
            codes.push_back(key - xOffset);
        }
    }
    return codes;
}

QString KdeSession::fakeInputObstacle() const {
    return input_.isThere() ? QString() : words_.text("KWin lets no keys of this program through.");
}

QString KdeSession::helperObstacle() {
    return helper_.isThere() ? QString()
                             : words_.text("Lorvane is not chosen as the virtual keyboard of KWin.");
}

} // namespace lorvane
