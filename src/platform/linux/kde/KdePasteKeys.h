// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/kde/FakeInput.h"
#include "platform/linux/kde/KdeKeyboard.h"

namespace lorvane {

/// Posts the keys that paste by fake input. Main thread.
class KdePasteKeys final : public PasteKeys {
 public:
    KdePasteKeys(FakeInput& input, Clock& clock, KdeKeyboard keyboard)
        : input_(input), clock_(clock), keyboard_(std::move(keyboard)) {}

    [[nodiscard]] bool readsPrimary(PasteRoute route) override;
    QCoro::Task<KeysOutcome> post(Aim aim, TaskScope scope) override;

 private:
    FakeInput& input_;
    Clock& clock_;
    KdeKeyboard keyboard_;
};

} // namespace lorvane
