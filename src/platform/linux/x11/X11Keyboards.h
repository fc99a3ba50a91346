// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/HeldKeys.h"
#include "platform/linux/x11/X11Connection.h"

#include <bitset>
#include <optional>
#include <set>
#include <vector>

namespace lorvane {

/// The slave keyboards of the X server: which are a user's and which is the one of synthetic keys. Main
/// thread; each call but `isSynthetic` of a known keyboard is a round trip.
class X11Keyboards {
 public:
    using Keys = std::bitset<256>;

    explicit X11Keyboards(X11Connection& connection) : connection_(connection) {}

    /// Looks anew; called when a keyboard came or went.
    void refresh();
    /// Whether the events of that device are made by programs (the XTEST extension).
    [[nodiscard]] bool isSynthetic(XDeviceId device);
    [[nodiscard]] const std::set<XDeviceId>& ofUser() const { return ofUser_; }
    /// The keyboard that XTEST posts on, by which its key codes are read.
    [[nodiscard]] std::optional<XDeviceId> synthetic() const;
    [[nodiscard]] const std::set<XDeviceId>& ofPrograms() const { return synthetic_; }
    /// The keys that are down on each of the user's keyboards; one round trip for all.
    [[nodiscard]] std::vector<Keys> keysDownOfUser() const;
    /// The keys that are down on that keyboard alone; nothing when it is gone.
    [[nodiscard]] std::optional<Keys> keysDown(XDeviceId device) const;

 private:
    X11Connection& connection_;
    std::set<XDeviceId> ofUser_;
    std::set<XDeviceId> synthetic_;
};

} // namespace lorvane
