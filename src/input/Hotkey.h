// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Localisation.h"

#include <QLatin1String>
#include <QString>

#include <array>
#include <cstdint>
#include <optional>

namespace lorvane {

/// The modifier keys that can start a dictation.
enum class Hotkey { rightCommand, rightOption, rightShift, rightControl, fn };

/// Every hotkey, in the order in which they are listed.
inline constexpr std::array allHotkeys{Hotkey::rightCommand, Hotkey::rightOption, Hotkey::rightShift,
                                       Hotkey::rightControl, Hotkey::fn};

/// The name in preferences.
[[nodiscard]] QLatin1String rawName(Hotkey hotkey);
/// Nothing for a name that is none of the five.
[[nodiscard]] std::optional<Hotkey> hotkeyFromRawName(const QString& name);

/// The code that its key events carry (KeyEvents.h).
[[nodiscard]] int codeOf(Hotkey hotkey);
/// The modifier bit that is set while it is down; the left twin sets the same one.
[[nodiscard]] std::uint32_t maskOf(Hotkey hotkey);

/// "Hold right ⌘" and "right ⌘", in the words of this desktop.
[[nodiscard]] QString label(Hotkey hotkey, const Localisation& words);
[[nodiscard]] QString shortLabel(Hotkey hotkey, const Localisation& words);

} // namespace lorvane
