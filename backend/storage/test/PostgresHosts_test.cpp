// SPDX-License-Identifier: GPL-3.0-or-later
// Databases at several places, of which some say nothing.
#include "storage/PostgresHosts.h"
#include "storage/test/PostgresSchemas.h"
#include "testing/ServerUnderTest.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <latch>
#include <sys/socket.h>
#include <unistd.h>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;
using namespace std::chrono_literals;

namespace {

// A place on 127.0.0.1 that takes connections and never says a word, or does not even take them.
class SilentHost {
 public:
    enum class Kind { mute, deaf };
    explicit SilentHost(Kind kind) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* any = reinterpret_cast<sockaddr*>(&address);
        socklen_t size = sizeof address;
        ::bind(listener_, any, size);
        ::listen(listener_, kind == Kind::mute ? 16 : 0);
        ::getsockname(listener_, any, &size);
        port_ = ntohs(address.sin_port);
        // Who comes when the queue is full gets no answer from the kernel.
        for (auto& filling : queue_)
            if (kind == Kind::deaf)
                ::connect(filling, any, size);
    }
    ~SilentHost() {
        ::close(listener_);
        for (const int filling : queue_)
            ::close(filling);
    }
    SilentHost(const SilentHost&) = delete;
    SilentHost& operator=(const SilentHost&) = delete;
    std::string place() const { return "127.0.0.1:" + std::to_string(port_); }

 private:
    static int fresh() { return ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0); }
    int listener_ = fresh();
    std::array<int, 4> queue_{fresh(), fresh(), fresh(), fresh()};
    std::uint16_t port_ = 0;
};

PostgresOptions withPlacesBefore(const std::string& places) {
    auto options = optionsFor(sharedPostgres(), freshSchema());
    options.address.insert(options.address.find('@') + 1, places + ',');
    return options;
}

} // namespace

TEST(PostgresHosts, AreThoseOfTheList) {
    const auto text = [](const std::string& address) {
        std::string all;
        for (const auto& host : postgresHosts(address))
            all += '(' + host.host + ' ' + host.address + ' ' + host.port + ')';
        return all;
    };
    EXPECT_EQ(text("postgresql://u@127.0.0.1:1,[::1]:2/n"), "(127.0.0.1  1)(::1  2)");
    EXPECT_EQ(text("postgresql://u@127.0.0.1,127.0.0.2/n?port=7"), "(127.0.0.1  7)(127.0.0.2  7)");
    EXPECT_EQ(text("postgresql:///n?host=/run/one,/run/two"), "(/run/one  )(/run/two  )");
    EXPECT_EQ(text("postgresql:///n?host=db.example&hostaddr=10.0.0.1"), "(db.example 10.0.0.1 )");
    EXPECT_EQ(text("postgresql:///n"), "(  )");
    EXPECT_EQ(text("postgresql://no.such.host.invalid/n"), "(no.such.host.invalid  )");
    ::setenv("PGHOST", "one.example,two.example", 1);
    ::setenv("PGPORT", "7", 1);
    EXPECT_EQ(text("postgresql:///n"), "(one.example  7)(two.example  7)");
    EXPECT_EQ(text("postgresql://db.example/n"), "(db.example  7)");
    ::unsetenv("PGHOST");
    ::unsetenv("PGPORT");
}

// The resolver answers when the test is over: whoever comes back before was not held by it.
TEST(PostgresHosts, ANameWithoutAnAnswerHoldsNobodyBeyondTheTimeAndKeepsNobodyFromTheNextHost) {
    std::latch over{1};
    std::atomic<int> asked = 0;
    auto options = withPlacesBefore("slow.example:5432");
    options.timeout = 3s;
    options.resolve = [&](const std::string& name) {
        if (name != "slow.example")
            return NameLookup::askSystem(name);
        ++asked;
        over.wait();
        --asked;
        return FoundAddresses{};
    };
    {
        PostgresStorage storage(options);
        EXPECT_EQ(outcome([&] { storage.today(); }), "done");
        auto alone = options;
        alone.address = "postgresql://u@slow.example/n";
        PostgresStorage nowhere(alone);
        EXPECT_EQ(outcome([&] { nowhere.today(); }), "away");
        EXPECT_EQ(asked, 2) << "still at it, for each of the two";
    }
    over.count_down();
    EXPECT_TRUE(eventually([&] { return asked == 0; }));
}

TEST(PostgresHosts, ASilentFirstHostDoesNotKeepItFromTheSecond) {
    for (const auto kind : {SilentHost::Kind::mute, SilentHost::Kind::deaf}) {
        const SilentHost silent(kind);
        auto options = withPlacesBefore(silent.place());
        options.timeout = 6s;
        PostgresStorage storage(options);
        EXPECT_EQ(outcome([&] { storage.today(); }), "done");
    }
}

TEST(PostgresHosts, AHostThatRefusesLeavesItsTimeToTheOthers) {
    auto options = withPlacesBefore("127.0.0.1:" + std::to_string(freePort()));
    PostgresStorage storage(options);
    EXPECT_EQ(outcome([&] { storage.today(); }), "done");
}

TEST(PostgresHosts, AllHostsTogetherHaveTheOneTimeAndAreToldByName) {
    const SilentHost silent(SilentHost::Kind::mute);
    PostgresOptions options;
    options.address = "postgresql://u@";
    for (int i = 0; i < 8; ++i)
        options.address += silent.place() + ',';
    options.address += silent.place() + "/n";
    options.timeout = 4s;
    const auto began = std::chrono::steady_clock::now();
    try {
        linkTo(options);
        ADD_FAILURE() << "nobody is there";
    } catch (const StorageAway& error) {
        EXPECT_NE(std::string(error.what()).find("127.0.0.1 gives no answer"), std::string::npos);
    }
    const auto took = std::chrono::steady_clock::now() - began;
    EXPECT_GE(took, 3900ms);
    EXPECT_LT(took, 20s) << "36 s when each had it all";
}
