// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "platform/linux/wayland/WaylandConnection.h"

#include <cstdint>
#include <optional>
#include <vector>

struct org_kde_kwin_fake_input;

namespace lorvane {

/// Keys by KWin's protocol for fake input, which it shows only to a program whose desktop file names it
/// (X-KDE-Wayland-Interfaces, Exec= with the absolute path of the program that runs). There is one state of
/// modifiers for all keyboards: what the user holds works on these keys too. Main thread.
class FakeInput {
 public:
    FakeInput(WaylandConnection& connection, Clock& clock);
    ~FakeInput();
    FakeInput(const FakeInput&) = delete;
    FakeInput& operator=(const FakeInput&) = delete;

    [[nodiscard]] bool isThere() const { return input_ != nullptr && connection_.isAlive(); }
    /// `inputCode`: of Linux input events.
    void key(std::uint32_t inputCode, bool isDown);
    /// The keys that come next are bare: Ctrl, Shift and Alt go up for everyone, whoever holds them. Super
    /// does not, since its release opens a menu.
    void liftModifiers();
    /// Hands over what was sent.
    void flush() { connection_.flush(); }
    /// Keys of ours may be going past at the moment, and be told to a watcher.
    [[nodiscard]] bool isPosting() const;

 private:
    void bind(const WaylandGlobal& global);
    void release();

    WaylandConnection& connection_;
    Clock& clock_;
    org_kde_kwin_fake_input* input_ = nullptr;
    std::uint32_t global_ = 0;
    std::optional<Instant> lastPosted_;
    Handle came_;
    Handle gone_;
};

} // namespace lorvane
