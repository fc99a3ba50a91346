// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/HistoryRecents.h"

namespace lorvane {

std::vector<RecentDictation> HistoryRecents::newest(std::size_t most) const {
    std::vector<RecentDictation> recents;
    for (const HistoryItem& item : history_.items()) {
        if (recents.size() == most) {
            break;
        }
        recents.push_back({item.text, item.createdAt.time()});
    }
    return recents;
}

Handle HistoryRecents::subscribe(std::function<void()> changed) {
    return history_.subscribe([changed = std::move(changed)](const HistoryList&) { changed(); });
}

} // namespace lorvane
