// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "ui/pill/PillDesktop.h"

#include <array>

namespace lorvane {

/// Keeps the pill's window in its place: looks again when another window or workspace comes to the front,
/// when the screens change, and once a second, which catches the pointer on its way to another screen and a
/// window that enters or leaves full screen. Main thread.
class PillPlacement {
 public:
    struct Window {
        /// Pixels a point on the screen of this frame.
        std::function<double(const QRect& screenFrame)> scaleOf;
        /// Pixels of the display. Called only when it is worth a move.
        std::function<void(const QRect& place, bool animated)> move;
    };

    PillPlacement(Clock& clock, PillDesktop& desktop, Window window);
    PillPlacement(const PillPlacement&) = delete;
    PillPlacement& operator=(const PillPlacement&) = delete;

    void reposition(bool animated);

 private:
    void repositionSoon(DesktopChange change);
    [[nodiscard]] bool isCovered(const DesktopScreen& screen, double scale);

    Clock& clock_;
    PillDesktop& desktop_;
    Window window_;
    std::optional<QRect> place_;
    std::array<Handle, 3> soon_;
    Handle changes_;
    Handle poll_;
};

} // namespace lorvane
