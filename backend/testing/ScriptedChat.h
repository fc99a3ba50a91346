// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace lorvane::backend::testing {

// The streamed answer of a language server, without its length; an empty `finish` leaves the reason out.
std::string chatAnswer(const std::vector<std::string>& tokens, const std::string& finish = "stop");

// What a request to a language server says.
struct ChatCall {
    std::string target; // "POST /v1/chat/completions"
    std::string head;
    std::string model;
    std::string system;
    std::string user;
    std::string body;
    std::string marker; // of its blocks
    // The text of a block of the user message; "absent" when there is none.
    std::string block(const std::string& name) const;
};
ChatCall readChatCall(const std::string& request);

} // namespace lorvane::backend::testing
