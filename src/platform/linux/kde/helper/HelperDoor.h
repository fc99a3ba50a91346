// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/kde/helper/HelperWire.h"

#include <functional>
#include <list>
#include <poll.h>
#include <string>
#include <vector>

namespace lorvane::helper {

/// The helper's socket: takes programs of the same user and passes their messages on. A peer that says
/// something that is no message, or does not read, is sent away. Nothing here waits.
class HelperDoor {
 public:
    struct Work {
        std::function<ContextState()> state;
        std::function<bool(const Commit&)> commit;
    };

    explicit HelperDoor(Work work) : work_(std::move(work)) {}
    HelperDoor(const HelperDoor&) = delete;
    HelperDoor& operator=(const HelperDoor&) = delete;
    /// The socket's file goes with it, unless a later helper has taken the name.
    ~HelperDoor();

    /// False with a reason on standard error. Takes the name from a helper that has it.
    [[nodiscard]] bool open(const std::string& path);
    /// What `poll` is to wait for.
    void addTo(std::vector<pollfd>& waits) const;
    /// What `poll` found.
    void handle(const std::vector<pollfd>& found);
    /// The state is another now.
    void tellState();
    [[nodiscard]] std::size_t guestCount() const { return guests_.size(); }

    static constexpr std::size_t mostGuests = 8;

 private:
    struct Guest {
        int socket = -1;
        Decoder decoder;
        bool hasGreeted = false;
        bool isGone = false;
    };

    void admit();
    void read(Guest& guest);
    void answer(Guest& guest, const Message& message);
    static void send(Guest& guest, const Message& message);
    void showOut();

    Work work_;
    std::string path_;
    int listener_ = -1;
    /// Of the socket's file, to know it again.
    unsigned long inode_ = 0;
    std::list<Guest> guests_;
};

} // namespace lorvane::helper
