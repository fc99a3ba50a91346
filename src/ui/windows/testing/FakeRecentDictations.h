// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "ui/windows/RecentDictations.h"

#include <algorithm>

namespace lorvane {

/// Has what it was given, newest first.
class FakeRecentDictations final : public RecentDictations {
 public:
    [[nodiscard]] std::vector<RecentDictation> newest(std::size_t most) const override {
        return {dictations_.begin(),
                dictations_.begin() + static_cast<std::ptrdiff_t>(std::min(most, dictations_.size()))};
    }
    [[nodiscard]] Handle subscribe(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }
    void set(std::vector<RecentDictation> dictations) {
        dictations_ = std::move(dictations);
        changed_.emit();
    }

 private:
    std::vector<RecentDictation> dictations_;
    Signal<> changed_;
};

} // namespace lorvane
