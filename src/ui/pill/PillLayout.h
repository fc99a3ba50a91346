// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Phase.h"

#include <QRect>
#include <QRectF>
#include <QSizeF>

/// What the pill shows in each phase and how large its capsule is. Points, in the window's own coordinates.
namespace lorvane::pillLayout {

enum class Content { restingBars, controls, wave, progress, done, notice };

[[nodiscard]] Content contentOf(const Phase& phase, bool hovering);

/// The capsule's outer size. `noticeTextWidth` matters to a notice alone: its text's width on one line.
[[nodiscard]] QSizeF sizeOf(Content content, double noticeTextWidth);
[[nodiscard]] QSizeF noticeSize(double textWidth);
[[nodiscard]] bool isTwoLines(const QSizeF& noticeSize);

/// What can be pointed at, clicked and opened, whatever the capsule's size.
[[nodiscard]] QRect hitArea();
/// A capsule of this size in the window: in the middle of the hit area, and never nearer to the edge that the
/// window stands on than a gap of the spacing grid, so a tall one grows upwards.
[[nodiscard]] QRectF capsule(const QSizeF& size);

/// What a tap anywhere in the hit area does.
enum class Tap { nothing, start, stop };
[[nodiscard]] Tap tapIn(const Phase& phase);

/// What the bars at rest are high.
inline constexpr double restingHeights[] = {4, 6.5, 9, 5.5};
/// Of every bar, at rest and in the wave; bars stand as far apart as they are wide.
inline constexpr double barWidth = 2.5;
/// What a bar of the wave gains from 0 to 1.
inline constexpr double waveReach = 11;

} // namespace lorvane::pillLayout
