// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtCore/QJsonArray>
#include <QtCore/QJsonValue>

namespace lorvane {

// The user of a Wayland session, where a test program has no devices of its own and sees no windows: the
// virtual desktop keeps a process that does, at $LORVANE_HANDS. Its requests stand in
// scripts/desktop/hands/serve.py.
namespace hands {
// This is such a session.
bool areThere();
// Returns when the compositor has taken it. Throws std::runtime_error with what went wrong.
QJsonValue ask(const QJsonArray& request);
} // namespace hands

} // namespace lorvane
