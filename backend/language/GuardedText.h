// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "language/ChatClient.h"
#include "language/FaithGuard.h"

#include <functional>
#include <optional>
#include <string>

namespace lorvane::backend {

// A model's text on its way to a client: passed on in whole words as long as the guard believes it, and not
// at all before the guard has seen enough. Blanks at both ends and control characters are left out. One
// thread.
class GuardedText : public ChatListener {
 public:
    using OnFragment = std::function<bool(std::string fragment)>;

    // `marker` must not come up in it. The views outlive it.
    GuardedText(std::string_view given, FaithGuard::Bounds bounds, std::string_view marker,
                const OnFragment& onFragment);

    void begin() override;
    bool hear(std::string_view text) override;
    bool committed() const override { return shown_ > 0; }

    // Nothing more comes. False: it is not what it should be.
    bool finish();
    const std::string& text() const { return text_; }
    bool shown() const { return shown_ > 0; }

 private:
    bool check(std::string_view piece);
    bool show();

    const std::string_view given_;
    const FaithGuard::Bounds bounds_;
    const std::string_view marker_;
    const OnFragment& onFragment_;
    std::optional<FaithGuard> guard_;
    std::string text_;    // whole words, looked at
    std::string pending_; // not looked at
    std::size_t shown_ = 0;
};

} // namespace lorvane::backend
