// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/evdev/EvdevKeyTable.h"

#include "input/HoldKeys.h"
#include "input/KeyEvents.h"

#include <linux/input-event-codes.h>

#include <QLatin1String>

#include <algorithm>
#include <array>

namespace lorvane {

namespace {

struct Row {
    EvdevCode key;
    int code;
};

constexpr std::array rows{
    Row{KEY_RIGHTMETA, keyCode::rightCommand},
    Row{KEY_RIGHTALT, keyCode::rightOption},
    Row{KEY_RIGHTSHIFT, keyCode::rightShift},
    Row{KEY_RIGHTCTRL, keyCode::rightControl},
    Row{KEY_LEFTMETA, keyCode::leftCommand},
    Row{KEY_LEFTALT, keyCode::leftOption},
    Row{KEY_LEFTSHIFT, keyCode::leftShift},
    Row{KEY_LEFTCTRL, keyCode::leftControl},
    Row{KEY_ESC, keyCode::escape},
};

struct ExtraKeyRow {
    QLatin1String name;
    EvdevCode key;
};

const std::array extraKeys{ExtraKeyRow{QLatin1String("Menu"), KEY_COMPOSE},
                           ExtraKeyRow{QLatin1String("Pause"), KEY_PAUSE},
                           ExtraKeyRow{QLatin1String("ScrollLock"), KEY_SCROLLLOCK},
                           ExtraKeyRow{QLatin1String("F13"), KEY_F13},
                           ExtraKeyRow{QLatin1String("F14"), KEY_F14},
                           ExtraKeyRow{QLatin1String("F15"), KEY_F15},
                           ExtraKeyRow{QLatin1String("F16"), KEY_F16},
                           ExtraKeyRow{QLatin1String("F17"), KEY_F17},
                           ExtraKeyRow{QLatin1String("F18"), KEY_F18},
                           ExtraKeyRow{QLatin1String("F19"), KEY_F19},
                           ExtraKeyRow{QLatin1String("F20"), KEY_F20},
                           ExtraKeyRow{QLatin1String("F21"), KEY_F21},
                           ExtraKeyRow{QLatin1String("F22"), KEY_F22},
                           ExtraKeyRow{QLatin1String("F23"), KEY_F23},
                           ExtraKeyRow{QLatin1String("F24"), KEY_F24}};

} // namespace

std::optional<int> keyCodeOf(EvdevCode key, std::optional<EvdevCode> extraKey) {
    if (key == extraKey) {
        return keyCode::fn;
    }
    const auto* const row =
        std::find_if(rows.begin(), rows.end(), [key](const Row& candidate) { return candidate.key == key; });
    if (row != rows.end()) {
        return row->code;
    }
    if (key == KEY_RESERVED || key == KEY_CAPSLOCK || key >= EvdevKeys().size()) {
        return std::nullopt;
    }
    return firstOtherKeyCode;
}

std::optional<EvdevCode> evdevCodeOf(int keyCode, std::optional<EvdevCode> extraKey) {
    if (keyCode == keyCode::fn) {
        return extraKey;
    }
    const auto* const row = std::find_if(
        rows.begin(), rows.end(), [keyCode](const Row& candidate) { return candidate.code == keyCode; });
    return row == rows.end() ? std::nullopt : std::optional(row->key);
}

std::optional<EvdevCode> evdevExtraKey(const QString& name) {
    const auto* const row = std::find_if(extraKeys.begin(), extraKeys.end(),
                                         [&name](const ExtraKeyRow& extra) { return extra.name == name; });
    return row == extraKeys.end() ? std::nullopt : std::optional(row->key);
}

bool isKeyboard(const EvdevKeys& keys) {
    return keys[KEY_A] ||
           std::any_of(rows.begin(), rows.end(), [&keys](const Row& row) { return keys[row.key]; }) ||
           std::any_of(extraKeys.begin(), extraKeys.end(),
                       [&keys](const ExtraKeyRow& extra) { return keys[extra.key]; });
}

} // namespace lorvane
