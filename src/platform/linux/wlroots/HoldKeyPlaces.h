// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace lorvane {

/// Where a key that can be watched stands, and what it adds to the modifiers of keys pressed after it.
struct HoldKeyPlace {
    /// As in KeyEvents.h.
    int keyCode = 0;
    /// Code of Linux input events plus 8.
    int key = 0;
    /// The modifiers with which other keys show while it is held, in `bindingModifier`; what it gives depends
    /// on the layout. None where other keys are not looked for.
    std::vector<std::uint8_t> chords;
};

/// The four modifiers, the place that the preference "tirra.linux.extraKey" names for `fn`, and Escape.
[[nodiscard]] std::vector<HoldKeyPlace> holdKeyPlaces(const QString& extraKey);

/// The code in key events of any key: left modifiers have codes of their own.
[[nodiscard]] int keyCodeOfPlace(int key);

/// The key of a symbol's name that is one of these, as the usual layouts have it; 0 for any other.
[[nodiscard]] int placeOfSymbol(const QString& symbol);

} // namespace lorvane
