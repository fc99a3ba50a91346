// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <QHash>
#include <QString>

namespace lorvane {

/// Applications that did not answer in time. One is not asked again until it is heard from, or for three
/// seconds, so that a hung application costs one bound and not one for every read.
class PatienceList {
 public:
    static constexpr Duration rest = std::chrono::seconds(3);

    void putAside(const QString& bus, Instant now) { until_.insert(bus, now + rest); }
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
    QHash<QString, Instant> until_;
};

} // namespace lorvane
