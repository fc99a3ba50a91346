// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/session/SeatKeymap.h"
#include "app/session/SessionPorts.h"
#include "platform/linux/kde/FakeInput.h"
#include "platform/linux/kde/HelperLink.h"
#include "platform/linux/kde/InputMethodV1Poster.h"
#include "platform/linux/kde/KdeEditingKeys.h"
#include "platform/linux/kde/KdeHoldRoad.h"
#include "platform/linux/kde/KdeLayout.h"
#include "platform/linux/kde/KdePasteKeys.h"
#include "platform/linux/kde/KwinKeySight.h"
#include "platform/linux/kde/PlasmaWindows.h"
#include "platform/linux/kde/SidedHoldRoad.h"
#include "platform/linux/x11/X11HoldRoad.h"

namespace lorvane {

/// What the KDE session gives. Made in every Wayland session: each road says for itself whether it is open.
/// Main thread.
class KdeSession {
 public:
    explicit KdeSession(const SessionParts& parts);

    [[nodiscard]] SessionPorts ports();
    [[nodiscard]] std::optional<WindowIdentity> activeWindow() const { return windows_.active(); }

 private:
    [[nodiscard]] KdeKeyboard keyboard();
    [[nodiscard]] bool isShown(XKeySight keys) const;
    [[nodiscard]] ModifierSight modifierSight();
    void followSight();
    [[nodiscard]] std::vector<std::uint32_t> chordFor(PasteRoute route) const;
    [[nodiscard]] QString fakeInputObstacle() const;
    [[nodiscard]] QString helperObstacle();

    const Localisation& words_;
    FakeInput input_;
    PlasmaWindows windows_;
    SeatKeymap keymap_;
    KdeLayout layout_;
    KdeHoldRoad shortcuts_;
    KwinKeySight sight_;
    X11RawKeys xKeys_;
    X11HoldRoad shown_;
    SidedHoldRoad sided_;
    KdePasteKeys pasteKeys_;
    KdeEditingKeys editingKeys_;
    HelperLink helper_;
    InputMethodV1Poster inputMethod_;
    Handle sightChange_;
    Handle serviceChange_;
};

} // namespace lorvane
