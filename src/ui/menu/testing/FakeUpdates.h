// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "ui/menu/Updates.h"

namespace lorvane {

/// Has the version that it was given.
class FakeUpdates final : public Updates {
 public:
    [[nodiscard]] std::optional<QString> available() const override { return version; }
    [[nodiscard]] Handle subscribeAvailable(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }
    void checkForUpdates() override { ++checks; }
    void find(const QString& found) {
        version = found;
        changed_.emit();
    }

    std::optional<QString> version;
    int checks = 0;

 private:
    Signal<> changed_;
};

} // namespace lorvane
