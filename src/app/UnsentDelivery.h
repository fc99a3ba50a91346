// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lorvane {

/// Has the takes recognised that an earlier process has left without a text, and puts their texts into the
/// history; for a process that can do nothing else, since its session has gone. Runs the event loop until
/// that is done; returns at once when there are none.
void deliverUnsentTakes();

} // namespace lorvane
