// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "ui/pill/PillDesktop.h"

namespace lorvane {

/// A desktop as a test lays it out: at first one screen with a panel of 48 at its bottom.
class FakePillDesktop final : public PillDesktop {
 public:
    [[nodiscard]] QPoint pointer() override { return at; }
    [[nodiscard]] std::vector<DesktopScreen> screens() override { return layout; }
    [[nodiscard]] std::optional<std::vector<DesktopWindow>> windows() override {
        ++listings;
        return stack;
    }
    [[nodiscard]] bool isOwn(const DesktopWindow& window) override { return window.id == own; }
    [[nodiscard]] Handle onChange(std::function<void(DesktopChange)> observer) override {
        return changed_.subscribe([observer = std::move(observer)](DesktopChange what) { observer(what); });
    }
    void change(DesktopChange what) { changed_.emit(what); }

    QPoint at{10, 10};
    std::vector<DesktopScreen> layout{{{0, 0, 1280, 800}, {0, 0, 1280, 752}}};
    std::optional<std::vector<DesktopWindow>> stack = std::vector<DesktopWindow>{};
    std::uint32_t own = 1;
    int listings = 0;

 private:
    Signal<DesktopChange> changed_;
};

} // namespace lorvane
