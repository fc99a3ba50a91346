// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/session/SessionPorts.h"
#include "platform/linux/wlroots/BindingHoldRoad.h"
#include "platform/linux/wlroots/CompositorSocket.h"
#include "platform/linux/wlroots/ForeignToplevels.h"
#include "platform/linux/wlroots/InputMethodPoster.h"
#include "platform/linux/wlroots/VirtualKeyboard.h"
#include "platform/linux/wlroots/VirtualKeyboardPoster.h"
#include "platform/linux/wlroots/WlrootsEditingKeys.h"
#include "platform/linux/wlroots/WlrootsPasteKeys.h"

namespace lorvane {

/// What compositors with the protocols of wlroots give, and sway by its socket. Made in every Wayland
/// session: each road says for itself whether it is open. Main thread.
class WlrootsSession {
 public:
    explicit WlrootsSession(const SessionParts& parts);

    [[nodiscard]] SessionPorts ports();
    [[nodiscard]] std::optional<WindowIdentity> activeWindow() const { return toplevels_.active(); }

 private:
    CompositorSocket socket_;
    BindingHoldRoad holdRoad_;
    ForeignToplevels toplevels_;
    VirtualKeyboard keyboard_;
    InputMethodPoster inputMethod_;
    VirtualKeyboardPoster keyboardPoster_;
    WlrootsEditingKeys editingKeys_;
    WlrootsPasteKeys pasteKeys_;
};

} // namespace lorvane
