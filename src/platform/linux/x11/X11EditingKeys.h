// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/EditingKeys.h"
#include "platform/linux/x11/PostingKeyboard.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Keyboards.h"

namespace lorvane {

/// By the XTEST extension, and by the state of each of the user's own keyboards. Main thread.
class X11EditingKeys final : public EditingKeys {
 public:
    explicit X11EditingKeys(X11Connection& connection)
        : connection_(connection), keyboards_(connection), keyboard_(connection) {}
    X11EditingKeys(const X11EditingKeys&) = delete;
    X11EditingKeys& operator=(const X11EditingKeys&) = delete;

    /// Two round trips.
    [[nodiscard]] std::uint32_t modifierFlags() override;
    [[nodiscard]] bool canPost() override { return keyboard_.canPost(); }
    void press(EditingKey key) override;

 private:
    [[nodiscard]] XKeyCode keyOf(EditingKey key);

    X11Connection& connection_;
    X11Keyboards keyboards_;
    PostingKeyboard keyboard_;
};

} // namespace lorvane
