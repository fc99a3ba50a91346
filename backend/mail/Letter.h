// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace lorvane::backend {

// Plain text to one person. The addresses have been checked by whoever makes a letter; subject and text may
// hold anything.
struct Letter {
    std::string from;
    std::string to;
    std::string replyTo; // empty: none
    std::string subject;
    std::string text; // UTF-8, lines end in "\n"
};

// The letter as it goes over the wire (RFC 5322, MIME): ASCII, lines of at most 78 signs with "\r\n". No
// content of any field can begin a header of its own. `unique` makes the message's identifier.
std::string messageOf(const Letter& letter, std::chrono::system_clock::time_point date,
                      std::string_view unique);

} // namespace lorvane::backend
