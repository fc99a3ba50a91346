// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/secrets/KeychainSecretStore.h"

#include <qt6keychain/keychain.h>

namespace lorvane {

namespace {

constexpr Duration patience = seconds(1);
using Secret = std::optional<QByteArray>;

// Text is kept as text, so that the desktop's own tools show it.
void setValue(QKeychain::WritePasswordJob& job, const QByteArray& value) {
    if (value.isValidUtf8()) {
        job.setTextData(QString::fromUtf8(value));
    } else {
        job.setBinaryData(value);
    }
}

} // namespace

QCoro::Task<std::optional<QByteArray>> KeychainSecretStore::read(QString service, QString account,
                                                                 TaskScope scope) {
    const Completion<Secret> arrival;
    auto* const job = new QKeychain::ReadPasswordJob(service); // deletes itself once it is done
    job->setKey(account);
    QObject::connect(job, &QKeychain::Job::finished, job, [job, arrival] {
        arrival.complete(job->error() == QKeychain::NoError ? Secret(job->binaryData()) : std::nullopt);
    });
    const Handle timer = clock_.after(patience, [arrival] { arrival.complete(std::nullopt); });
    job->start();
    co_return co_await arrival.wait(scope);
}

QCoro::Task<void> KeychainSecretStore::write(QString service, QString account, QByteArray value,
                                             TaskScope scope) {
    const Completion<bool> arrival;
    auto* const job = new QKeychain::WritePasswordJob(service); // deletes itself once it is done
    job->setKey(account);
    setValue(*job, value);
    QObject::connect(job, &QKeychain::Job::finished, job, [arrival] { arrival.complete(true); });
    const Handle timer = clock_.after(patience, [arrival] { arrival.complete(false); });
    job->start();
    co_await arrival.wait(scope);
}

} // namespace lorvane
