// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PasteKeys.h"
#include "platform/linux/wlroots/VirtualKeyboard.h"

namespace lorvane {

/// By a keyboard of our own that has a v whatever the user's layout is. Modifiers that the user holds do not
/// reach it, so nothing is waited for. Main thread.
class WlrootsPasteKeys final : public PasteKeys {
 public:
    WlrootsPasteKeys(VirtualKeyboard& keyboard, WaylandConnection& connection, Clock& clock)
        : keyboard_(keyboard), connection_(connection), clock_(clock) {}
    WlrootsPasteKeys(const WlrootsPasteKeys&) = delete;
    WlrootsPasteKeys& operator=(const WlrootsPasteKeys&) = delete;

    QCoro::Task<KeysOutcome> post(Aim aim, TaskScope scope) override;

 private:
    VirtualKeyboard& keyboard_;
    WaylandConnection& connection_;
    Clock& clock_;
};

} // namespace lorvane
