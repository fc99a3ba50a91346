// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/VirtualKeyboardPoster.h"

#include "platform/linux/wlroots/FragmentKeymap.h"

namespace lorvane {

QCoro::Task<bool> VirtualKeyboardPoster::canPost(PostingTarget /*target*/, TaskScope /*scope*/) {
    co_return keyboard_.isOffered();
}

QCoro::Task<PostOutcome> VirtualKeyboardPoster::post(PostingTarget /*target*/, QString text,
                                                     TaskScope /*scope*/) {
    const auto fragment = FragmentKeymap::of(text);
    if (!fragment || !keyboard_.useKeymap(fragment->keymap)) {
        co_return PostOutcome::refused;
    }
    keyboard_.holdModifiers(0);
    for (const std::uint32_t key : fragment->keys) {
        keyboard_.tap(key);
    }
    keyboard_.flush();
    co_return connection_.isAlive() ? PostOutcome::posted : PostOutcome::unknown;
}

} // namespace lorvane
