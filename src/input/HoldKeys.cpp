// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/HoldKeys.h"

#include "input/KeyEvents.h"

namespace lorvane {

std::uint32_t modifierMaskOf(int code) {
    switch (code) {
    case keyCode::rightCommand:
    case keyCode::leftCommand:
        return modifierFlag::command;
    case keyCode::rightOption:
    case keyCode::leftOption:
        return modifierFlag::option;
    case keyCode::rightShift:
    case keyCode::leftShift:
        return modifierFlag::shift;
    case keyCode::rightControl:
    case keyCode::leftControl:
        return modifierFlag::control;
    case keyCode::fn:
        return modifierFlag::function;
    default:
        return 0;
    }
}

int leftTwinOf(int code) {
    switch (code) {
    case keyCode::rightCommand:
        return keyCode::leftCommand;
    case keyCode::rightOption:
        return keyCode::leftOption;
    case keyCode::rightShift:
        return keyCode::leftShift;
    case keyCode::rightControl:
        return keyCode::leftControl;
    default:
        return 0;
    }
}

} // namespace lorvane
