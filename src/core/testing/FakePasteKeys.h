// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "core/PasteKeys.h"

#include <functional>
#include <vector>

namespace lorvane {

/// Keys that tell a test that they were posted.
class FakePasteKeys final : public PasteKeys {
 public:
    explicit FakePasteKeys(Clock& clock) : clock_(clock) {}

    [[nodiscard]] bool readsPrimary(PasteRoute route) override {
        return route == PasteRoute::primaryTerminal || (route == PasteRoute::terminal && !hasV);
    }
    QCoro::Task<KeysOutcome> post(Aim aim, TaskScope scope) override;

    /// What becomes of the keys; unless they are not posted, they take effect.
    KeysOutcome outcome = KeysOutcome::posted;
    /// The layout has a v.
    bool hasV = true;
    /// The user holds a modifier for so long.
    Duration delay = Duration::zero();
    /// They are not let go before the text has been asked for.
    bool waitsForEffect = false;
    /// What the application does with the keys.
    std::function<void()> onPosted;
    std::vector<PasteRoute> posted;

 private:
    Clock& clock_;
};

} // namespace lorvane
