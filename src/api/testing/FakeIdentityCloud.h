// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/IdentityCloud.h"
#include "base/PreferenceCatalogue.h"

#include <QStringList>

#include <vector>

namespace lorvane {

/// A cloud record in memory that answers at once.
class FakeIdentityCloud final : public IdentityCloud {
 public:
    explicit FakeIdentityCloud(Preferences& preferences) : preferences_(preferences) {}

    QCoro::Task<void> restoreIdentity(Duration timeout, TaskScope) override {
        restoreTimeouts.push_back(timeout);
        if (!record.isEmpty()) {
            preferences_.set(preference::token, record);
        }
        co_return;
    }
    QCoro::Task<void> retireIdentity(QString token, TaskScope) override {
        retired.append(token);
        if (record == token) {
            record.clear();
        }
        co_return;
    }

    QString record;
    std::vector<Duration> restoreTimeouts;
    QStringList retired;

 private:
    Preferences& preferences_;
};

} // namespace lorvane
