// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/SecretStore.h"

namespace lorvane {

/// The key store of the desktop (Secret Service or KWallet) through QtKeychain. A desktop without one, or one
/// that waits for its user, reads as empty after a second at most. Main thread.
class KeychainSecretStore final : public SecretStore {
 public:
    explicit KeychainSecretStore(Clock& clock) : clock_(clock) {}

    QCoro::Task<std::optional<QByteArray>> read(QString service, QString account, TaskScope scope) override;
    QCoro::Task<void> write(QString service, QString account, QByteArray value, TaskScope scope) override;

 private:
    Clock& clock_;
};

} // namespace lorvane
