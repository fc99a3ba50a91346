// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lorvane::backend {

// The listening socket that a service manager has handed over by the rules of sd_listen_fds(3), or -1. It is
// not passed on to children. Throws std::runtime_error when there is more than one.
int inheritedSocket();

} // namespace lorvane::backend
