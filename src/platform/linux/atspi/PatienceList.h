// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <QHash>
#include <QString>

#include <functional>

namespace lorvane {

/// Applications that did not answer in time. One is not asked again until it is heard from, or for three
/// seconds, so that a hung application costs one bound and not one for every read.
class PatienceList {
 public:
    static constexpr Duration rest = std::chrono::seconds(3);

    PatienceList() = default;
    /// `wentAside`: told of each application that is put aside and was not yet.
    explicit PatienceList(std::function<void(const QString& bus)> wentAside)
        : wentAside_(std::move(wentAside)) {}

    void putAside(const QString& bus, Instant now) {
        const bool isNew = !isAside(bus, now);
        until_.insert(bus, now + rest);
        if (isNew && wentAside_) {
            wentAside_(bus);
        }
    }
    void heardFrom(const QString& bus) { until_.remove(bus); }
    [[nodiscard]] bool isAside(const QString& bus, Instant now) {
        const auto found = until_.constFind(bus);
        if (found == until_.constEnd()) {
            return false;
        }
        if (now < *found) {
            return true;
        }
        until_.erase(found);
        return false;
    }

 private:
    std::function<void(const QString&)> wentAside_;
    QHash<QString, Instant> until_;
};

} // namespace lorvane
