// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

#include <QDBusMessage>

namespace lorvane {

// The answer to a call on the session bus, or an error after the bound. Runs the event loop meanwhile.
// QDBus::BlockWithGui, which is meant for this, waits for ever when the answer comes before it listens: once
// in some hundred thousand calls on a busy machine.
QDBusMessage askOnSessionBus(const QDBusMessage& call, std::chrono::milliseconds bound);

} // namespace lorvane
