// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/test/ApiFixture.h"
#include "base/Dates.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/secrets/KeychainSecretStore.h"
#include "support/Wait.h"

#include <iostream>

using namespace lorvane;

namespace {

using Secret = std::optional<QByteArray>;

QCoro::Task<bool> writing(SecretStore& store, QString service, QByteArray value, TaskScope scope) {
    co_await store.write(service, "account", value, scope);
    co_return true;
}

/// The fake and the keyring of the desktop that the suite runs in.
class SecretStoreContract : public ::testing::TestWithParam<bool> {
 protected:
    SecretStore& store() {
        if (GetParam()) {
            return keyring;
        }
        return fake;
    }
    Secret read(const QString& account = "account") {
        Running<Secret> call([&](TaskScope scope) { return store().read(service, account, scope); });
        EXPECT_TRUE(waitUntil([&] { return call.isDone(); }));
        return call.value();
    }
    void write(const QByteArray& value) {
        Running<bool> call([&](TaskScope scope) { return writing(store(), service, value, scope); });
        EXPECT_TRUE(waitUntil([&] { return call.isDone(); }));
    }

    const QString service = "com.ostrand.tirra.test." + newUuid();
    QtClock clock;
    FakeSecretStore fake;
    KeychainSecretStore keyring{clock};
};

TEST_P(SecretStoreContract, WhatIsNotThereReadsAsNothing) { EXPECT_EQ(read(), std::nullopt); }

TEST_P(SecretStoreContract, WhatWasWrittenComesBack) {
    write("D0E1");
    EXPECT_EQ(read(), "D0E1");
    EXPECT_EQ(read("another account"), std::nullopt);
}

TEST_P(SecretStoreContract, AWriteReplacesWhatIsThere) {
    write("first");
    write("second");
    EXPECT_EQ(read(), "second");
}

TEST_P(SecretStoreContract, BytesThatAreNoTextComeBackAsTheyWere) {
    const QByteArray bytes("\xff\x00\xfe", 3);
    write(bytes);
    EXPECT_EQ(read(), bytes);
}

INSTANTIATE_TEST_SUITE_P(Stores, SecretStoreContract, ::testing::Bool(),
                         [](const auto& with) { return with.param ? "Keyring" : "FakeSecretStore"; });

TEST(KeychainSecretStore, ATextIsSeenByTheDesktopsOwnTool) {
    QtClock clock;
    KeychainSecretStore store(clock);
    const QString service = "com.ostrand.tirra.test." + newUuid();
    Running<bool> call([&](TaskScope scope) { return writing(store, service, "D0E1", scope); });
    ASSERT_TRUE(waitUntil([&] { return call.isDone(); }));
    const ToolResult tool = runTool("secret-tool", {"lookup", "server", service, "user", "account"});
    EXPECT_EQ(tool.output, "D0E1") << tool.errors.toStdString();
}

} // namespace
