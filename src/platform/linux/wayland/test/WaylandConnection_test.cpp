// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/wayland/WaylandSeat.h"
#include "support/Wait.h"

#include <QDir>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace lorvane {

namespace {

/// A compositor in another process that offers what it is told to.
class BareCompositor {
 public:
    BareCompositor() {
        qputenv("XDG_RUNTIME_DIR", runtime_.path().toUtf8());
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QStringLiteral(LORVANE_BARE_COMPOSITOR), {});
        socket_ = runtime_.filePath(QString::fromUtf8(line())).toUtf8();
    }
    ~BareCompositor() { end(); }
    BareCompositor(const BareCompositor&) = delete;
    BareCompositor& operator=(const BareCompositor&) = delete;

    [[nodiscard]] const QByteArray& socket() const { return socket_; }
    /// The number to remove it by.
    QByteArray add(const QByteArray& interface, int version) {
        tell("add " + interface + ' ' + QByteArray::number(version));
        return line();
    }
    void remove(const QByteArray& number) { tell("remove " + number); }
    void refuse() {
        tell("refuse");
        (void)line();
    }
    void tell(const QByteArray& command) {
        process_.write(command + '\n');
        process_.waitForBytesWritten();
    }
    void end() {
        if (process_.state() != QProcess::NotRunning) {
            process_.kill();
            process_.waitForFinished();
        }
    }

 private:
    QByteArray line() {
        while (!process_.canReadLine()) {
            if (!process_.waitForReadyRead(static_cast<int>(generously.count()))) {
                ADD_FAILURE() << "the compositor says nothing";
                return {};
            }
        }
        return process_.readLine().trimmed();
    }

    QTemporaryDir runtime_;
    QProcess process_;
    QByteArray socket_;
};

class WaylandConnectionTest : public ::testing::Test {
 protected:
    void connectNow() {
        connection.emplace(log, compositor.socket());
        lost = connection->onLost([this] { ++losses; });
    }
    void connectAndKnow() {
        connectNow();
        ASSERT_TRUE(connection->awaitGlobals(clock, generously));
    }
    void expectLoss() {
        EXPECT_TRUE(waitUntil([this] { return losses > 0; }));
        EXPECT_FALSE(connection->isAlive());
        EXPECT_EQ(lines.filter("compositor is gone").size(), 1) << lines.join("\n").toStdString();
    }

    QtClock clock;
    QStringList lines;
    DiagnosticLog log{clock, std::nullopt, [this](const QString& line) { lines.append(line); }};
    BareCompositor compositor;
    int losses = 0;
    std::optional<WaylandConnection> connection;
    Handle lost;
};

TEST_F(WaylandConnectionTest, WithoutACompositorItIsNotAliveAndEveryCallDoesNothing) {
    WaylandConnection none(log, "/nonexistent/wayland-9");
    EXPECT_FALSE(none.isAlive());
    EXPECT_FALSE(none.awaitGlobals(clock, generously));
    EXPECT_FALSE(none.offers("wl_seat"));
    EXPECT_EQ(none.bind<wl_seat>(wl_seat_interface, 1), nullptr);
    none.flush();
    (void)none.afterServer([] { ADD_FAILURE() << "nobody can answer"; });
}

TEST_F(WaylandConnectionTest, TellsWhatIsOfferedWithItsVersion) {
    compositor.add("wl_seat", 5);
    connectAndKnow();
    EXPECT_TRUE(connection->offers("wl_seat"));
    EXPECT_TRUE(connection->offers("wl_seat", 5));
    EXPECT_FALSE(connection->offers("wl_seat", 6));
    EXPECT_FALSE(connection->offers("wl_output"));
}

TEST_F(WaylandConnectionTest, LearnsTheGlobalsWithoutBeingWaitedForToo) {
    compositor.add("wl_seat", 5);
    connectNow();
    int changes = 0;
    const Handle changed = connection->onGlobalsChanged([&] { ++changes; });
    EXPECT_TRUE(waitUntil([&] { return changes == 1; }));
    EXPECT_TRUE(connection->knowsGlobals());
    EXPECT_TRUE(connection->offers("wl_seat"));
}

TEST_F(WaylandConnectionTest, BindsInTheHighestVersionThatBothKnow) {
    compositor.add("wl_seat", 3);
    connectAndKnow();
    const auto asOffered = waylandOwned(connection->bind<wl_seat>(wl_seat_interface, 5), wl_seat_destroy);
    ASSERT_NE(asOffered, nullptr);
    EXPECT_EQ(wl_seat_get_version(asOffered.get()), 3U);
    const auto asWanted = waylandOwned(connection->bind<wl_seat>(wl_seat_interface, 2), wl_seat_destroy);
    EXPECT_EQ(wl_seat_get_version(asWanted.get()), 2U);
    EXPECT_EQ(connection->bind<wl_seat>(wl_seat_interface, 5, 4), nullptr) << "too old";
    EXPECT_EQ(connection->bind<wl_output>(wl_output_interface, 1), nullptr) << "not offered";
}

TEST_F(WaylandConnectionTest, FollowsGlobalsThatComeAndGo) {
    connectAndKnow();
    QList<std::uint32_t> came;
    QList<std::uint32_t> went;
    const Handle appeared =
        connection->onGlobal("wl_output", [&](const WaylandGlobal& global) { came.append(global.name); });
    const Handle gone =
        connection->onGlobalGone([&](const WaylandGlobal& global) { went.append(global.name); });
    const QByteArray output = compositor.add("wl_output", 2);
    compositor.add("wl_seat", 2);
    EXPECT_TRUE(waitUntil([&] { return connection->offers("wl_seat"); }));
    EXPECT_EQ(came.size(), 1) << "the seat is no output";
    compositor.remove(output);
    EXPECT_TRUE(waitUntil([&] { return !connection->offers("wl_output"); }));
    EXPECT_EQ(went, came);
}

TEST_F(WaylandConnectionTest, AWatchIsToldOfWhatIsThereAlready) {
    compositor.add("wl_output", 2);
    compositor.add("wl_output", 4);
    connectAndKnow();
    QList<std::uint32_t> versions;
    const Handle appeared = connection->onGlobal(
        "wl_output", [&](const WaylandGlobal& global) { versions.append(global.version); });
    EXPECT_EQ(versions, (QList<std::uint32_t>{2, 4}));
}

TEST_F(WaylandConnectionTest, TellsWhenTheServerHasCarriedOutWhatCameBefore) {
    compositor.add("wl_seat", 3);
    connectAndKnow();
    bool isDone = false;
    const Handle answer = connection->afterServer([&] { isDone = true; });
    EXPECT_FALSE(isDone);
    EXPECT_TRUE(waitUntil([&] { return isDone; }));
    bool isTold = false;
    {
        const Handle dropped = connection->afterServer([&] { isTold = true; });
    }
    isDone = false;
    const Handle later = connection->afterServer([&] { isDone = true; });
    EXPECT_TRUE(waitUntil([&] { return isDone; }));
    EXPECT_FALSE(isTold) << "its handle had ended";
}

TEST_F(WaylandConnectionTest, ACompositorThatIsKilledIsToldOnce) {
    compositor.add("wl_seat", 3);
    connectAndKnow();
    const auto seat = waylandOwned(connection->bind<wl_seat>(wl_seat_interface, 1), wl_seat_destroy);
    compositor.end();
    expectLoss();
    connection->flush();
    EXPECT_FALSE(connection->offers("wl_seat"));
    EXPECT_EQ(connection->bind<wl_seat>(wl_seat_interface, 1), nullptr);
    (void)waitUntil([this] { return losses > 1; }, std::chrono::milliseconds(100));
    EXPECT_EQ(losses, 1);
}

TEST_F(WaylandConnectionTest, RequestsOnALostConnectionDoNothing) {
    compositor.add("wl_shm", 1);
    connectAndKnow();
    const auto shm = waylandOwned(connection->bind<wl_shm>(wl_shm_interface, 1), wl_shm_destroy);
    compositor.end();
    expectLoss();
    for (int i = 0; i < 10'000; ++i) { // more than any buffer holds
        wl_shm_pool_destroy(wl_shm_create_pool(shm.get(), 0, 16));
    }
    connection->flush();
}

TEST_F(WaylandConnectionTest, ARefusedRequestIsALossThatSaysWhich) {
    compositor.add("wl_seat", 3);
    connectAndKnow();
    compositor.refuse();
    const auto seat = waylandOwned(connection->bind<wl_seat>(wl_seat_interface, 1), wl_seat_destroy);
    expectLoss();
    EXPECT_EQ(lines.filter("error 7 of wl_seat").size(), 1) << lines.join("\n").toStdString();
}

TEST_F(WaylandConnectionTest, ACompositorThatDoesNotAnswerHoldsNobodyLongerThanTheBound) {
    compositor.tell("stop");
    connectNow();
    const Instant before = clock.now();
    EXPECT_FALSE(connection->awaitGlobals(clock, std::chrono::milliseconds(50)));
    EXPECT_GE(clock.now() - before, std::chrono::milliseconds(50));
    EXPECT_TRUE(connection->isAlive());
    EXPECT_EQ(losses, 0);
}

TEST_F(WaylandConnectionTest, TheSeatIsTheNextOneWhenItGoes) {
    const QByteArray first = compositor.add("wl_seat", 3);
    connectAndKnow();
    WaylandSeat seat(*connection);
    const wl_seat* const before = seat.seat();
    ASSERT_NE(before, nullptr);
    int changes = 0;
    const Handle changed = seat.onChanged([&] { ++changes; });
    const QByteArray second = compositor.add("wl_seat", 3);
    compositor.remove(first);
    EXPECT_TRUE(waitUntil([&] { return changes == 1; }));
    EXPECT_NE(seat.seat(), nullptr);
    compositor.remove(second);
    EXPECT_TRUE(waitUntil([&] { return changes == 2; }));
    EXPECT_EQ(seat.seat(), nullptr);
    compositor.add("wl_seat", 1);
    EXPECT_TRUE(waitUntil([&] { return seat.seat() != nullptr; }));
}

} // namespace

} // namespace lorvane
