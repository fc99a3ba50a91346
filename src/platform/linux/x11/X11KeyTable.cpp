// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11KeyTable.h"

#include "input/KeyEvents.h"

#include <algorithm>
#include <array>

namespace lorvane {

namespace {

struct ModifierRow {
    XKeyCode key;
    int code;
    std::uint32_t mask;
};

// The left twins have codes of their own, below those of the right ones.
constexpr std::array modifiers{
    ModifierRow{134, keyCode::rightCommand, modifierFlag::command},
    ModifierRow{108, keyCode::rightOption, modifierFlag::option},
    ModifierRow{62, keyCode::rightShift, modifierFlag::shift},
    ModifierRow{105, keyCode::rightControl, modifierFlag::control},
    ModifierRow{133, 55, modifierFlag::command},
    ModifierRow{64, 58, modifierFlag::option},
    ModifierRow{50, 56, modifierFlag::shift},
    ModifierRow{37, 59, modifierFlag::control},
};

constexpr XKeyCode escapeKey = 9;
constexpr XKeyCode capsLockKey = 66;
/// Keeps the numbers of all other keys clear of those that have a name.
constexpr int otherKeys = 0x100;

struct ExtraKeyRow {
    QLatin1String name;
    XKeyCode key;
};

const std::array extraKeys{
    ExtraKeyRow{QLatin1String("Menu"), 135},      ExtraKeyRow{QLatin1String("Pause"), 127},
    ExtraKeyRow{QLatin1String("ScrollLock"), 78}, ExtraKeyRow{QLatin1String("F13"), 191},
    ExtraKeyRow{QLatin1String("F14"), 192},       ExtraKeyRow{QLatin1String("F15"), 193},
    ExtraKeyRow{QLatin1String("F16"), 194},       ExtraKeyRow{QLatin1String("F17"), 195},
    ExtraKeyRow{QLatin1String("F18"), 196},       ExtraKeyRow{QLatin1String("F19"), 197},
    ExtraKeyRow{QLatin1String("F20"), 198},       ExtraKeyRow{QLatin1String("F21"), 199},
    ExtraKeyRow{QLatin1String("F22"), 200},       ExtraKeyRow{QLatin1String("F23"), 201},
    ExtraKeyRow{QLatin1String("F24"), 202}};

} // namespace

KeyMeaning meaningOf(XKeyCode key, std::optional<XKeyCode> extraKey) {
    if (key == extraKey) {
        return {KeyMeaning::Sort::modifier, keyCode::fn, modifierFlag::function};
    }
    const auto* const row = std::find_if(modifiers.begin(), modifiers.end(),
                                         [key](const ModifierRow& modifier) { return modifier.key == key; });
    if (row != modifiers.end()) {
        return {KeyMeaning::Sort::modifier, row->code, row->mask};
    }
    if (key == capsLockKey) {
        return {KeyMeaning::Sort::lock, otherKeys + key, 0};
    }
    return {KeyMeaning::Sort::other, key == escapeKey ? keyCode::escape : otherKeys + key, 0};
}

std::optional<XKeyCode> extraKeyFromName(const QString& name) {
    const auto* const row = std::find_if(extraKeys.begin(), extraKeys.end(),
                                         [&name](const ExtraKeyRow& extra) { return extra.name == name; });
    return row == extraKeys.end() ? std::nullopt : std::optional(row->key);
}

} // namespace lorvane
