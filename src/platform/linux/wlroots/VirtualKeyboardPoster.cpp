// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/VirtualKeyboardPoster.h"

#include "platform/linux/wlroots/CommandKeys.h"
#include "platform/linux/wlroots/FragmentKeymap.h"

#include <utility>

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
    isBorrowed_ = true;
    keyboard_.holdModifiers(0);
    for (const std::uint32_t key : fragment->keys) {
        keyboard_.tap(key);
    }
    keyboard_.flush();
    co_return connection_.isAlive() ? PostOutcome::posted : PostOutcome::unknown;
}

// Until the user's next key, programs that start read the keymap that was there last.
void VirtualKeyboardPoster::finish() {
    if (std::exchange(isBorrowed_, false) && keyboard_.useKeymap(commandKeys::keymap())) {
        keyboard_.flush();
    }
}

} // namespace lorvane
