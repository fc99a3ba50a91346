// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <set>

namespace lorvane {

/// What matters of the user's own bindings, as far as the configuration's text shows it: files that it
/// includes are not read.
struct UserBindings {
    /// Keys (codes of Linux input events plus 8) that do something when pressed alone.
    std::set<int> keys;
    /// Modifiers with which some key loads the configuration anew.
    std::set<std::uint8_t> reloading;
    /// Until a held key repeats, in milliseconds: the longest of any keyboard's; 0 when one never repeats.
    int repeatDelay = 600;

    /// `config`: as sway's command GET_CONFIG gives it.
    [[nodiscard]] static UserBindings read(const QString& config);
};

} // namespace lorvane
