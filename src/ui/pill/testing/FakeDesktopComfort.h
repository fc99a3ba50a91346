// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "ui/pill/DesktopComfort.h"

namespace lorvane {

class FakeDesktopComfort final : public DesktopComfort {
 public:
    [[nodiscard]] bool wantsLessMotion() const override { return lessMotion_; }
    [[nodiscard]] bool wantsMoreContrast() const override { return moreContrast_; }
    [[nodiscard]] Handle onChange(std::function<void()> observer) override {
        return changed_.subscribe([observer = std::move(observer)] { observer(); });
    }

    void set(bool lessMotion, bool moreContrast) {
        lessMotion_ = lessMotion;
        moreContrast_ = moreContrast;
        changed_.emit();
    }

 private:
    bool lessMotion_ = false;
    bool moreContrast_ = false;
    Signal<> changed_;
};

} // namespace lorvane
