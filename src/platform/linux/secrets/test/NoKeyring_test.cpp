// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/test/ApiFixture.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/secrets/KeychainSecretStore.h"
#include "support/Wait.h"

#include <iostream>

using namespace lorvane;

namespace {

using Secret = std::optional<QByteArray>;

QCoro::Task<bool> writing(SecretStore& store, TaskScope scope) {
    co_await store.write("com.ostrand.tirra.test", "account", "value", scope);
    co_return true;
}

/// Runs on a session bus on which nobody keeps secrets and nobody can be started who would.
TEST(NoKeyring, NothingBlocksAndEverythingReadsAsEmpty) {
    QtClock clock;
    KeychainSecretStore store(clock);
    const Instant start = clock.now();
    Running<Secret> read(
        [&](TaskScope scope) { return store.read("com.ostrand.tirra.test", "account", scope); });
    Running<bool> write([&](TaskScope scope) { return writing(store, scope); });
    const Duration began = clock.now() - start;
    ASSERT_TRUE(waitUntil([&] { return read.isDone() && write.isDone(); }));
    const Duration took = clock.now() - start;
    std::cout << "the calls came back after " << inSeconds(began) << " s, the results after "
              << inSeconds(took) << " s\n";
    EXPECT_EQ(read.value(), std::nullopt);
    EXPECT_LE(took, seconds(1.5));
}

} // namespace
