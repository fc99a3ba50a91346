// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/CommandKeys.h"

#include <cstdlib>
#include <memory>

#include <xkbcommon/xkbcommon.h>

namespace lorvane::commandKeys {

namespace {

template <auto end>
struct End {
    template <typename Object>
    void operator()(Object* object) const {
        end(object);
    }
};

QByteArray makeKeymap() {
    const std::unique_ptr<xkb_context, End<xkb_context_unref>> context(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    if (!context) {
        return {};
    }
    const xkb_rule_names american{"evdev", "pc105", "us", "", ""};
    const std::unique_ptr<xkb_keymap, End<xkb_keymap_unref>> keymap(
        xkb_keymap_new_from_names(context.get(), &american, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap) {
        return {};
    }
    const std::unique_ptr<char, End<std::free>> text(
        xkb_keymap_get_as_string(keymap.get(), XKB_KEYMAP_FORMAT_TEXT_V1));
    return {text.get()};
}

} // namespace

const QByteArray& keymap() {
    static const QByteArray text = makeKeymap();
    return text;
}

} // namespace lorvane::commandKeys
