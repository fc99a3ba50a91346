// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/Handle.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <vector>

namespace lorvane {

struct RecentDictation {
    QString text;
    WallTime createdAt;
    friend bool operator==(const RecentDictation&, const RecentDictation&) = default;
};

/// The dictations of late. Main thread.
class RecentDictations {
 public:
    virtual ~RecentDictations() = default;
    /// At most so many, newest first.
    [[nodiscard]] virtual std::vector<RecentDictation> newest(std::size_t most) const = 0;
    [[nodiscard]] virtual Handle subscribe(std::function<void()> changed) = 0;
};

} // namespace lorvane
