// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/MacHistoryStore.h"
#include "ui/windows/RecentDictations.h"

namespace lorvane {

/// The head of the history.
class HistoryRecents final : public RecentDictations {
 public:
    explicit HistoryRecents(MacHistoryStore& history) : history_(history) {}
    [[nodiscard]] std::vector<RecentDictation> newest(std::size_t most) const override;
    [[nodiscard]] Handle subscribe(std::function<void()> changed) override;

 private:
    MacHistoryStore& history_;
};

} // namespace lorvane
