// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "language/ChatClient.h"

#include <functional>
#include <stop_token>
#include <string>
#include <string_view>

namespace lorvane::backend {

struct CleanUpJob {
    std::string raw;
    std::string language; // a code, or empty when nobody knows
    std::string style;    // how its writer likes texts to look; may be empty
    std::string before;   // what stands before the text; may be empty
};

struct Written {
    enum class End { done, failed, stopped };
    End end = End::failed;
    std::string text;   // when done
    bool shown = false; // fragments were passed on: when it failed, of a text that is void
};

// Texts written anew by a language server. What it writes is believed only as long as it looks like the text
// it was given, see FaithGuard: an answer to what was dictated, a refusal or a remark is a failure. Any
// thread; a call blocks.
class Writer {
 public:
    // Fragments that concatenate to the text, each with its own leading blank. False: nobody takes any more.
    using OnFragment = std::function<bool(std::string fragment)>;

    explicit Writer(ChatClient& chat) : chat_(chat) {}

    Written cleanUp(const CleanUpJob& job, const OnFragment& onFragment, const std::stop_token& stop) const;
    Written translate(std::string_view text, std::string_view target, const OnFragment& onFragment,
                      const std::stop_token& stop) const;

 private:
    ChatClient& chat_;
};

// The English name of a language code ("pt-BR"), empty for what is none.
std::string languageName(std::string_view code);

} // namespace lorvane::backend
