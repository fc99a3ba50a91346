// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/secrets/KeychainSecretStore.h"

#include <qt6keychain/keychain.h>

namespace lorvane {

namespace {

constexpr Duration patience = std::chrono::seconds(1);

using Answer = std::optional<QByteArray>;

// The job deletes itself once it is done, however long that takes; only the waiting for it is bounded.
template <typename Job>
Completion<Answer> begin(Job* job, std::function<Answer(const Job&)> answerOf) {
    const Completion<Answer> answer;
    QObject::connect(job, &QKeychain::Job::finished, job, [job, answer, answerOf = std::move(answerOf)] {
        answer.complete(job->error() == QKeychain::NoError ? answerOf(*job) : Answer());
    });
    job->setInsecureFallback(false);
    job->start();
    return answer;
}

} // namespace

QCoro::Task<Answer> KeychainSecretStore::read(QString service, QString account, TaskScope scope) {
    auto* const job = new QKeychain::ReadPasswordJob(service);
    job->setKey(account);
    const auto answer = begin<QKeychain::ReadPasswordJob>(
        job, [](const QKeychain::ReadPasswordJob& done) { return Answer(done.binaryData()); });
    const Handle limit = clock_.after(patience, [answer] { answer.complete(std::nullopt); });
    co_return co_await answer.wait(scope);
}

QCoro::Task<void> KeychainSecretStore::write(QString service, QString account, QByteArray value,
                                             TaskScope scope) {
    auto* const job = new QKeychain::WritePasswordJob(service);
    job->setKey(account);
    job->setBinaryData(value);
    const auto answer = begin<QKeychain::WritePasswordJob>(
        job, [](const QKeychain::WritePasswordJob&) { return Answer(QByteArray()); });
    const Handle limit = clock_.after(patience, [answer] { answer.complete(std::nullopt); });
    co_await answer.wait(scope);
}

} // namespace lorvane
