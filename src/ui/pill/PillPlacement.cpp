// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillPlacement.h"

#include "ui/pill/PillGeometry.h"

namespace lorvane {

PillPlacement::PillPlacement(Clock& clock, PillDesktop& desktop, Window window)
    : clock_(clock), desktop_(desktop), window_(std::move(window)),
      changes_(desktop_.onChange([this](DesktopChange change) { repositionSoon(change); })),
      poll_(clock_.every(seconds(1), [this] { reposition(true); })) {}

void PillPlacement::reposition(bool animated) {
    const auto screen = pillGeometry::screenFor(desktop_.pointer(), desktop_.screens());
    if (!screen) {
        return;
    }
    const double scale = window_.scaleOf(screen->frame);
    const QRect place = pillGeometry::panelRect(*screen, isCovered(*screen, scale), scale);
    if (place_ && place_->size() == place.size() &&
        !pillGeometry::isWorthMoving(place_->topLeft(), place.topLeft(), scale)) {
        return;
    }
    place_ = place;
    window_.move(place, animated);
}

// Changes come in the middle of reading the display's events, and in swarms.
void PillPlacement::repositionSoon(DesktopChange change) {
    const bool animated = change != DesktopChange::screens;
    soon_.at(static_cast<std::size_t>(change)) =
        clock_.after(Duration::zero(), [this, animated] { reposition(animated); });
}

// The windows are asked for only where the answer moves the pill.
bool PillPlacement::isCovered(const DesktopScreen& screen, double scale) {
    if (screen.frame.bottom() == screen.visibleFrame.bottom()) {
        return false;
    }
    return pillGeometry::isCovered(screen.frame, scale, desktop_.windows(),
                                   [this](const DesktopWindow& window) { return desktop_.isOwn(window); });
}

} // namespace lorvane
