// SPDX-License-Identifier: GPL-3.0-or-later
// The input method that KWin starts when the user has chosen it: writes what the dictation program hands it
// into the field that has the keyboard, and does nothing of its own.
#include "platform/linux/kde/helper/HelperDoor.h"
#include "platform/linux/kde/helper/InputContext.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/signalfd.h>
#include <vector>
#include <wayland-client.h>

#include <csignal>
#include <unistd.h>

namespace {

using lorvane::helper::Commit;
using lorvane::helper::HelperDoor;
using lorvane::helper::InputContext;

int endSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&signals, signal);
    }
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

/// Waits for anything, and tells it to whom it concerns; false when the compositor has gone.
bool turn(wl_display* display, HelperDoor& door, int ending) {
    while (wl_display_prepare_read(display) != 0) {
        if (wl_display_dispatch_pending(display) < 0) {
            return false;
        }
    }
    const bool isSent = wl_display_flush(display) >= 0;
    const auto wanted = static_cast<short>(isSent || errno != EAGAIN ? POLLIN : POLLIN | POLLOUT);
    std::vector<pollfd> waits{{wl_display_get_fd(display), wanted, 0}, {ending, POLLIN, 0}};
    door.addTo(waits);
    const int found = poll(waits.data(), waits.size(), -1);
    if (found > 0 && (waits[0].revents & (POLLIN | POLLHUP | POLLERR)) != 0) {
        (void)wl_display_read_events(display);
    } else {
        wl_display_cancel_read(display);
    }
    if (wl_display_dispatch_pending(display) < 0 || waits[1].revents != 0) {
        return false;
    }
    door.handle(waits);
    return wl_display_get_error(display) == 0;
}

} // namespace

int main() {
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    if (folder == nullptr || *folder == '\0') {
        std::fputs("lorvane-input-method: XDG_RUNTIME_DIR is not set\n", stderr);
        return EXIT_FAILURE;
    }
    const int ending = endSignals();
    HelperDoor* told = nullptr;
    InputContext context([&told] {
        if (told != nullptr) {
            told->tellState();
        }
    });
    HelperDoor door({[&context] { return context.state(); },
                     [&context](const Commit& commit) { return context.commit(commit); }});
    if (!context.open() || !door.open(std::string(folder) + "/" + lorvane::helper::socketName)) {
        return EXIT_FAILURE;
    }
    told = &door;
    while (turn(context.display(), door, ending)) {
    }
    told = nullptr;
    close(ending);
    return EXIT_SUCCESS;
}
