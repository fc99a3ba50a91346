// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/pill/PillDesktop.h"

#include <functional>

/// Where the pill's window stands. Pixels of the display, y downwards; `scale` is how many of them make a
/// point on the screen in question.
namespace lorvane::pillGeometry {

/// Points. The window never changes its size; the capsule is drawn inside it.
inline constexpr int panelWidth = 440;
inline constexpr int panelHeight = 96;
/// Points by which the window reaches below the edge that it stands on.
inline constexpr int overhang = 6;

/// The screen under the pointer, else the main one; absent when there is none.
[[nodiscard]] std::optional<DesktopScreen> screenFor(QPoint pointer,
                                                     const std::vector<DesktopScreen>& screens);

/// Whether the window hides what stands at the bottom of the screen: as wide as the screen and down to its
/// edge, with 2 points of grace, and more than 200 points high.
[[nodiscard]] bool reachesBottom(const DesktopWindow& window, const QRect& screenFrame, double scale);
/// Whether a window of another program does. A list that cannot be read counts as no.
[[nodiscard]] bool isCovered(const QRect& screenFrame, double scale,
                             const std::optional<std::vector<DesktopWindow>>& windows,
                             const std::function<bool(const DesktopWindow&)>& isOwn);

/// The window's rectangle: in the middle of the screen's frame, at the bottom of the frame when it is
/// covered, else of the visible frame.
[[nodiscard]] QRect panelRect(const DesktopScreen& screen, bool covered, double scale);
/// More than one point away, in either direction.
[[nodiscard]] bool isWorthMoving(QPoint from, QPoint to, double scale);

/// Half away from zero.
[[nodiscard]] int rounded(double value);

} // namespace lorvane::pillGeometry
