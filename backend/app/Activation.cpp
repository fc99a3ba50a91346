// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Activation.h"

#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace lorvane::backend {

namespace {
constexpr int firstHandedOver = 3;
}

int inheritedSocket() {
    const char* pid = std::getenv("LISTEN_PID");
    const char* count = std::getenv("LISTEN_FDS");
    const bool ours = pid && count && std::to_string(::getpid()) == pid;
    const std::string sockets = ours ? count : "0";
    for (const char* name : {"LISTEN_PID", "LISTEN_FDS", "LISTEN_FDNAMES"})
        ::unsetenv(name);
    if (sockets == "0")
        return -1;
    if (sockets != "1" || ::fcntl(firstHandedOver, F_SETFD, FD_CLOEXEC) != 0)
        throw std::runtime_error("one listening socket was expected of the service manager, LISTEN_FDS is " +
                                 sockets);
    return firstHandedOver;
}

} // namespace lorvane::backend
