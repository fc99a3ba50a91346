// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/X11KeyEvents.h"

#include <QAbstractNativeEventFilter>

namespace lorvane {

/// Keeps from the program's own windows the key presses that a local monitor keeps. Installed on the
/// application by whoever makes it; lives as long as the windows may get keys.
class OwnWindowKeyFilter final : public QAbstractNativeEventFilter {
 public:
    explicit OwnWindowKeyFilter(X11KeyEvents& keys) : keys_(keys) {}
    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

 private:
    X11KeyEvents& keys_;
};

} // namespace lorvane
