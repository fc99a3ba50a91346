// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/Xkb.h"

#include <gtest/gtest.h>

namespace lorvane {

/// The keymap that a desktop with these layouts has.
inline XkbKeymap keymapOf(const char* layouts, const char* variants = "", const char* options = "") {
    const XkbContext context(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    const xkb_rule_names names{"evdev", "pc105", layouts, variants, options};
    XkbKeymap keymap(xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
    EXPECT_NE(keymap, nullptr) << "no keymap for " << layouts;
    return keymap;
}

} // namespace lorvane
