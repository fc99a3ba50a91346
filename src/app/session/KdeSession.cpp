// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/KdeSession.h"

#include "app/ControlNames.h"
#include "platform/linux/x11/PasteChord.h"

namespace lorvane {

namespace {

/// An X key code is that of Linux input events and this.
constexpr std::uint32_t xOffset = 8;

bool isModifier(const KeyMeaning& meaning) { return meaning.sort == KeyMeaning::Sort::modifier; }

std::set<int> modifiersDown(const X11Keyboards& keyboards) {
    std::set<int> codes;
    for (const X11Keyboards::Keys& keys : keyboards.keysDownOfUser()) {
        for (std::size_t key = 0; key < keys.size(); ++key) {
            const KeyMeaning meaning = meaningOf(static_cast<XKeyCode>(key), std::nullopt);
            if (keys[key] && isModifier(meaning)) {
                codes.insert(meaning.code);
            }
        }
    }
    return codes;
}

} // namespace

KdeSession::KdeSession(const SessionParts& parts)
    : words_(parts.foundation.words), input_(parts.wayland, parts.foundation.clock), windows_(parts.wayland),
      keymap_(parts.wayland, parts.seat), layout_(parts.bus),
      shortcuts_(parts.bus, parts.foundation, control::serviceName, [this] { return input_.isPosting(); }),
      sight_(parts.bus), xKeys_(parts.display, parts.foundation.clock),
      shown_(parts.display, xKeys_, parts.foundation.clock,
             {[this] { return isShown(XKeySight::everything); }, [this] { return input_.isPosting(); }}),
      sided_(parts.foundation.clock, shortcuts_, modifierSight()),
      pasteKeys_(input_, parts.foundation.clock, keyboard()), editingKeys_(input_, keyboard()),
      helper_(parts.foundation.clock, parts.foundation.log, HelperLink::standardPath()),
      inputMethod_(helper_), sightChange_(sight_.onChange([this] { followSight(); })),
      serviceChange_(shortcuts_.onChange([this] { followSight(); })) {}

SessionPorts KdeSession::ports() {
    SessionPorts ports;
    ports.holdRoads = {&shown_, &sided_};
    ports.posters = {{&inputMethod_, inputMethod_.name(), [this] { return helperObstacle(); }}};
    const auto fakeInput = [this] { return fakeInputObstacle(); };
    ports.editingKeys = {{&editingKeys_, QStringLiteral("KWin fake input"), fakeInput}};
    ports.pasteKeys = {{&pasteKeys_, QStringLiteral("KWin fake input"), fakeInput}};
    return ports;
}

// Another compositor may run for a user who has KWin's settings as well.
bool KdeSession::isShown(XKeySight keys) const {
    return sight_.sight() == keys && xKeys_.isPossible() && shortcuts_.isThere();
}

ModifierSight KdeSession::modifierSight() {
    return {[this] { return isShown(XKeySight::modifiers); },
            [this](const ModifierSight::Observer& observer) {
                return xKeys_.watch([observer](const X11KeyEdge& edge) {
                    const KeyMeaning meaning = meaningOf(edge.key, std::nullopt);
                    if (isModifier(meaning)) {
                        observer(meaning.code, edge.isPress, edge.time);
                    }
                });
            },
            [this] { return modifiersDown(xKeys_.keyboards()); }};
}

void KdeSession::followSight() {
    shown_.reconsider();
    sided_.reconsider();
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
