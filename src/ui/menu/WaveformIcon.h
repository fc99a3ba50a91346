// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QImage>

#include <array>

namespace lorvane {

/// The sizes of a tray, in pixels.
inline constexpr std::array waveformSizes{16, 22, 24, 32, 48, 64};

/// The symbol "waveform" on a ground of its own, so that it is seen on panels of any colour.
[[nodiscard]] QImage waveformIcon(int size);
/// The same in all sizes; needs a display.
[[nodiscard]] QIcon waveformIcon();

} // namespace lorvane
