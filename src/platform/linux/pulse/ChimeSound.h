// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

namespace lorvane {

inline constexpr std::uint32_t chimeRate = 48'000;

/// The samples of the chime: one channel, a soft bell of a third of a second.
[[nodiscard]] std::vector<std::int16_t> chimeSound();

} // namespace lorvane
