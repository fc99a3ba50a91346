// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/evdev/KeyDevices.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace lorvane {

/// A code of linux/input-event-codes.h: the place of the key on the keyboard, whatever the layout makes of
/// it.
using EvdevCode = std::uint16_t;

/// The code of KeyEvents.h. Keys without a meaning here all have the same one, so that what is typed goes no
/// further than the reader; Caps Lock and what is no key have none. `extraKey`: the place that stands for
/// `fn`.
[[nodiscard]] std::optional<int> keyCodeOf(EvdevCode key, std::optional<EvdevCode> extraKey);
/// The place of a key of KeyEvents.h that has a name there.
[[nodiscard]] std::optional<EvdevCode> evdevCodeOf(int keyCode, std::optional<EvdevCode> extraKey);
/// The place of a name of the preference "tirra.linux.extraKey"; nothing for a name that is none.
[[nodiscard]] std::optional<EvdevCode> evdevExtraKey(const QString& name);
/// Whether a device that has these keys can be of use: a keyboard, or a pedal with a key that can be held.
[[nodiscard]] bool isKeyboard(const EvdevKeys& keys);

} // namespace lorvane
