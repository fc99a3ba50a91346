// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/SecretStore.h"

namespace lorvane {

/// The desktop's keyring (Secret Service or KWallet) by QtKeychain. Nothing waits longer than a second: a
/// keyring that is locked, absent or asks the user something reads as empty meanwhile. What is asked of it
/// goes on in the background.
class KeychainSecretStore final : public SecretStore {
 public:
    explicit KeychainSecretStore(Clock& clock) : clock_(clock) {}

    QCoro::Task<std::optional<QByteArray>> read(QString service, QString account, TaskScope scope) override;
    QCoro::Task<void> write(QString service, QString account, QByteArray value, TaskScope scope) override;

 private:
    Clock& clock_;
};

} // namespace lorvane
