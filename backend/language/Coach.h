// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "language/ChatClient.h"
#include "language/Insights.h"

#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

// What a language server says about texts. Nothing when it does not answer in time, or not as it was asked.
// Any thread; a call blocks.
class Coach {
 public:
    explicit Coach(ChatClient& chat) : chat_(chat) {}

    std::optional<Insights> insights(const std::vector<std::string>& samples,
                                     const std::stop_token& stop) const;
    // `period` is a word of the client's: "week", "selection".
    std::optional<std::string> summary(const std::vector<std::string>& texts, std::string_view period,
                                       const std::stop_token& stop) const;
    // An empty text: none of them fits.
    std::optional<std::string> label(std::string_view text, const std::stop_token& stop) const;

 private:
    ChatClient& chat_;
};

} // namespace lorvane::backend
