// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "input/KeyEvents.h"

#include <functional>
#include <vector>

namespace lorvane {

/// Watches the Escape key, and watches no key at all while nothing is there to be ended. Main thread.
class EscapeWatch {
 public:
    EscapeWatch(Clock& clock, KeyEvents& events) : clock_(clock), events_(events) {}
    EscapeWatch(const EscapeWatch&) = delete;
    EscapeWatch& operator=(const EscapeWatch&) = delete;

    /// Called some moments after the key, never inside its event: look at what is going on then.
    std::function<void()> onEscape;

    void watch(bool wanted);
    [[nodiscard]] bool isWatching() const { return !monitors_.empty(); }

 private:
    void queueReaction();

    Clock& clock_;
    KeyEvents& events_;
    std::vector<Handle> monitors_;
    Handle reaction_;
};

} // namespace lorvane
