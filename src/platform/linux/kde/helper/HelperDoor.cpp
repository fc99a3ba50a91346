// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/helper/HelperDoor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace lorvane::helper {

namespace {

constexpr mode_t ownerOnly = 0600;
constexpr std::size_t readAtOnce = 4096;

bool isOfOurUser(int socket) {
    ucred peer{};
    socklen_t size = sizeof(peer);
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

bool fail(const char* what) {
    std::fprintf(stderr, "lorvane-input-method: %s: %s\n", what, std::strerror(errno));
    return false;
}

} // namespace

HelperDoor::~HelperDoor() {
    for (const Guest& guest : guests_) {
        close(guest.socket);
    }
    if (listener_ < 0) {
        return;
    }
    close(listener_);
    struct stat now {};
    if (inode_ != 0 && stat(path_.c_str(), &now) == 0 && now.st_ino == inode_) {
        unlink(path_.c_str());
    }
}

bool HelperDoor::open(const std::string& path) {
    // Made beside and moved there, so that a name that is taken is no failure and never half there.
    const std::string making = path + "." + std::to_string(getpid());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (making.size() >= sizeof(address.sun_path)) {
        errno = ENAMETOOLONG;
        return fail(path.c_str());
    }
    std::copy(making.begin(), making.end(), address.sun_path);
    listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    unlink(making.c_str());
    if (listener_ < 0 || bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        return fail(making.c_str());
    }
    struct stat made {};
    if (chmod(making.c_str(), ownerOnly) != 0 || listen(listener_, mostGuests) != 0 ||
        stat(making.c_str(), &made) != 0 || rename(making.c_str(), path.c_str()) != 0) {
        const int reason = errno;
        unlink(making.c_str());
        errno = reason;
        return fail(path.c_str());
    }
    path_ = path;
    inode_ = made.st_ino;
    return true;
}

void HelperDoor::addTo(std::vector<pollfd>& waits) const {
    waits.push_back({listener_, POLLIN, 0});
    for (const Guest& guest : guests_) {
        waits.push_back({guest.socket, POLLIN, 0});
    }
}

void HelperDoor::handle(const std::vector<pollfd>& found) {
    const auto isReady = [&found](int socket) {
        return std::any_of(found.begin(), found.end(),
                           [socket](const pollfd& wait) { return wait.fd == socket && wait.revents != 0; });
    };
    for (Guest& guest : guests_) {
        if (isReady(guest.socket)) {
            read(guest);
        }
    }
    showOut();
    if (isReady(listener_)) {
        admit();
    }
}

void HelperDoor::admit() {
    const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket < 0) {
        return;
    }
    if (!isOfOurUser(socket) || guests_.size() >= mostGuests) {
        close(socket);
        return;
    }
    guests_.push_back({socket, {}, false, false});
    send(guests_.back(), Hello{});
    showOut();
}

void HelperDoor::read(Guest& guest) {
    std::array<char, readAtOnce> bytes{};
    const ssize_t count = recv(guest.socket, bytes.data(), bytes.size(), 0);
    if (count <= 0) {
        guest.isGone = count == 0 || (errno != EAGAIN && errno != EINTR);
        return;
    }
    guest.decoder.feed({bytes.data(), static_cast<std::size_t>(count)});
    while (!guest.isGone) {
        const auto message = guest.decoder.next();
        if (!message) {
            break;
        }
        answer(guest, *message);
    }
    guest.isGone = guest.isGone || guest.decoder.isBroken();
}

void HelperDoor::answer(Guest& guest, const Message& message) {
    if (const auto* const hello = std::get_if<Hello>(&message)) {
        guest.hasGreeted = hello->version == wireVersion;
        guest.isGone = !guest.hasGreeted;
        send(guest, work_.state());
    } else if (const auto* const commit = std::get_if<Commit>(&message); commit && guest.hasGreeted) {
        send(guest, Committed{commit->request, work_.commit(*commit)});
    } else {
        guest.isGone = true;
    }
}

// A guest that does not read has its buffer full before long, and would otherwise have to be waited for.
void HelperDoor::send(Guest& guest, const Message& message) {
    if (guest.isGone) {
        return;
    }
    const std::string bytes = encode(message);
    const ssize_t sent = ::send(guest.socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    guest.isGone = sent != static_cast<ssize_t>(bytes.size());
}

void HelperDoor::tellState() {
    for (Guest& guest : guests_) {
        if (guest.hasGreeted) {
            send(guest, work_.state());
        }
    }
    showOut();
}

void HelperDoor::showOut() {
    guests_.remove_if([](const Guest& guest) {
        if (guest.isGone) {
            close(guest.socket);
        }
        return guest.isGone;
    });
}

} // namespace lorvane::helper
