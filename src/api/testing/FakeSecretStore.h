// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/SecretStore.h"

#include <map>
#include <utility>

namespace lorvane {

/// A key store in memory.
class FakeSecretStore final : public SecretStore {
 public:
    QCoro::Task<std::optional<QByteArray>> read(QString service, QString account, TaskScope) override {
        const auto found = secrets.find({service, account});
        co_return locked || found == secrets.end() ? std::nullopt : std::optional(found->second);
    }
    QCoro::Task<void> write(QString service, QString account, QByteArray value, TaskScope) override {
        ++writes;
        if (!locked) {
            secrets[{service, account}] = value;
        }
        co_return;
    }

    std::map<std::pair<QString, QString>, QByteArray> secrets;
    /// Reads as empty and loses what is written.
    bool locked = false;
    int writes = 0;
};

} // namespace lorvane
