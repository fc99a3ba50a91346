// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Task.h"

#include <QString>

namespace lorvane {

/// The device's token on the user's own cloud record. Main thread. Neither operation fails; both throw
/// TaskCancelled when their scope ends.
class IdentityCloud {
 public:
    virtual ~IdentityCloud() = default;
    /// Looks for a token there for at most `timeout`; one that is not empty is stored in the preferences.
    virtual QCoro::Task<void> restoreIdentity(Duration timeout, TaskScope scope) = 0;
    /// Clears the token there if the record still holds this one.
    virtual QCoro::Task<void> retireIdentity(QString token, TaskScope scope) = 0;
};

/// For a desktop without a cloud: never finds anything and has nothing to clear.
class NoIdentityCloud final : public IdentityCloud {
 public:
    QCoro::Task<void> restoreIdentity(Duration, TaskScope) override { co_return; }
    QCoro::Task<void> retireIdentity(QString, TaskScope) override { co_return; }
};

} // namespace lorvane
