// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandSeat.h"

#include <QByteArray>

#include <cstdint>

#include <input-method-unstable-v2-client-protocol.h>

namespace lorvane {

/// The one input method of the seat, while it is ours. Main thread.
class InputMethod {
 public:
    /// What is known of the field that has the keyboard, since its last complete word.
    struct State {
        bool isActive = false;
        bool isSecret = false;
    };

    InputMethod(zwp_input_method_manager_v2& manager, wl_seat& seat);
    InputMethod(const InputMethod&) = delete;
    InputMethod& operator=(const InputMethod&) = delete;

    /// Another program is the input method.
    [[nodiscard]] bool isUnavailable() const { return isUnavailable_; }
    [[nodiscard]] const State& state() const { return state_; }
    void commit(const QByteArray& text);
    /// Told when `state` or `isUnavailable` may have changed.
    [[nodiscard]] Handle onChange(std::function<void()> changed) {
        return changed_.subscribe(std::move(changed));
    }

 private:
    static const zwp_input_method_v2_listener listener;
    void done();

    WaylandOwned<zwp_input_method_v2> object_;
    /// The number of words so far, which goes with each commit.
    std::uint32_t serial_ = 0;
    State state_;
    State pending_;
    bool isUnavailable_ = false;
    Signal<> changed_;
};

} // namespace lorvane
