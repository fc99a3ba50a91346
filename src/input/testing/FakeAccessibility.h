// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "input/Accessibility.h"

namespace lorvane {

/// Trusted or not, as the test says; counts how often the user was sent to the settings.
class FakeAccessibility final : public Accessibility {
 public:
    explicit FakeAccessibility(bool trusted = true) : trusted_(trusted) {}

    [[nodiscard]] bool isTrusted() const override { return trusted_; }
    void openAccessibilitySettings() override { ++settingsOpened; }
    [[nodiscard]] Handle subscribe(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }

    void setTrusted(bool trusted) {
        trusted_ = trusted;
        changed_.emit();
    }

    int settingsOpened = 0;

 private:
    bool trusted_;
    Signal<> changed_;
};

} // namespace lorvane
