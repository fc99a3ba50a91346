// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/X11KeyEvents.h"

#include <QAbstractNativeEventFilter>

#include <optional>

namespace lorvane {

/// Keeps from the program's own windows the key presses that a local monitor keeps, and their repeats while
/// the key stays down. Installed on the application by whoever makes it; lives as long as the windows may get
/// keys.
class OwnWindowKeyFilter final : public QAbstractNativeEventFilter {
 public:
    explicit OwnWindowKeyFilter(X11KeyEvents& keys) : keys_(keys) {}
    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

 private:
    [[nodiscard]] bool keeps(const xcb_key_press_event_t& press);

    X11KeyEvents& keys_;
    /// The last key whose press was kept, while its repeats may come; 0 when there is none. The monitor may
    /// have ended meanwhile.
    XKeyCode kept_ = 0;
    std::optional<std::uint32_t> releasedAt_;
};

} // namespace lorvane
