// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/test/ApiFixture.h"
#include "base/Dates.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/secrets/KeychainSecretStore.h"
#include "support/Wait.h"

#include <csignal>
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
    for (const QByteArray& bytes : {QByteArray("\xff\x00\xfe", 3), QByteArray("cut within a letter \xc3")}) {
        write(bytes);
        EXPECT_EQ(read(), bytes);
    }
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

/// The desktop's keyring is there and does nothing while this lives.
class FrozenKeyring {
 public:
    FrozenKeyring() {
        const ToolResult owner =
            runTool("dbus-send",
                    {"--session", "--print-reply=literal", "--dest=org.freedesktop.DBus", "/",
                     "org.freedesktop.DBus.GetConnectionUnixProcessID", "string:org.freedesktop.secrets"});
        pid_ = owner.output.trimmed().split(' ').last().toInt();
        EXPECT_TRUE(pid_ > 1 && ::kill(pid_, SIGSTOP) == 0) << owner.errors.toStdString();
    }
    ~FrozenKeyring() {
        if (pid_ > 1) {
            ::kill(pid_, SIGCONT);
        }
    }
    FrozenKeyring(const FrozenKeyring&) = delete;
    FrozenKeyring& operator=(const FrozenKeyring&) = delete;

 private:
    pid_t pid_ = 0;
};

TEST(KeychainSecretStore, AFrozenKeyringReadsAsEmptyAfterASecondAndHoldsNothingUp) {
    QtClock clock;
    KeychainSecretStore store(clock);
    const QString service = "com.ostrand.tirra.test." + newUuid();
    Running<bool> prepared([&](TaskScope scope) { return writing(store, service, "D0E1", scope); });
    ASSERT_TRUE(waitUntil([&] { return prepared.isDone(); }));
    {
        const FrozenKeyring frozen;
        const Instant start = clock.now();
        Running<Secret> read([&](TaskScope scope) { return store.read(service, "account", scope); });
        Running<bool> write([&](TaskScope scope) { return writing(store, service, "NEW", scope); });
        const Duration calls = clock.now() - start;
        ASSERT_TRUE(waitUntil([&] { return read.isDone() && write.isDone(); }));
        const Duration results = clock.now() - start;
        std::cout << "with a frozen keyring the calls came back after " << inSeconds(calls)
                  << " s, the results after " << inSeconds(results) << " s\n";
        EXPECT_EQ(read.value(), std::nullopt);
        EXPECT_LE(calls, seconds(0.2));
        EXPECT_LE(results, seconds(1.5));
    }
    Running<Secret> later([&](TaskScope scope) { return store.read(service, "account", scope); });
    ASSERT_TRUE(waitUntil([&] { return later.isDone(); }));
    EXPECT_TRUE(later.value() == "NEW" || later.value() == "D0E1");
}

} // namespace
