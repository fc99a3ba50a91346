// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Task.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace lorvane {

/// The desktop's key store. Main thread. A store that is locked, absent or slow (1 s at most) reads as empty,
/// and a failed write is silent.
class SecretStore {
 public:
    virtual ~SecretStore() = default;
    virtual QCoro::Task<std::optional<QByteArray>> read(QString service, QString account,
                                                        TaskScope scope) = 0;
    /// Replaces what is there.
    virtual QCoro::Task<void> write(QString service, QString account, QByteArray value, TaskScope scope) = 0;
};

} // namespace lorvane
