// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/WlrootsSession.h"

namespace lorvane {

WlrootsSession::WlrootsSession(const SessionParts& parts)
    : socket_(parts.foundation.clock, parts.foundation.log, CompositorSocket::standardPlaces),
      holdRoad_(parts.foundation, socket_), toplevels_(parts.wayland),
      keyboard_(parts.wayland, parts.seat, parts.foundation.clock),
      inputMethod_(parts.wayland, parts.seat, parts.foundation.clock),
      keyboardPoster_(keyboard_, parts.wayland),
      editingKeys_(keyboard_, [this] { return holdRoad_.heldFlags(); }),
      pasteKeys_(keyboard_, parts.wayland, parts.foundation.clock) {
    socket_.start();
}

SessionPorts WlrootsSession::ports() {
    const auto noKeyboard = [this] {
        return keyboard_.isOffered() ? QString() : QStringLiteral("the compositor has no virtual keyboards");
    };
    const auto noInputMethod = [this] {
        return inputMethod_.isOffered() ? QString()
                                        : QStringLiteral("the compositor has no input methods of version 2");
    };
    return {{&holdRoad_},
            {{&inputMethod_, inputMethod_.name(), noInputMethod},
             {&keyboardPoster_, keyboardPoster_.name(), noKeyboard}},
            {{&editingKeys_, QStringLiteral("virtual keyboard"), noKeyboard}},
            {{&pasteKeys_, QStringLiteral("virtual keyboard"), noKeyboard}}};
}

} // namespace lorvane
