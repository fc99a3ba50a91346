// SPDX-License-Identifier: GPL-3.0-or-later
// The door over a real socket, its peers by hand.
#include "platform/linux/kde/helper/HelperDoor.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <optional>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace lorvane::helper {

namespace {

class Peer {
 public:
    explicit Peer(const std::string& path) : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy(path.begin(), path.end(), address.sun_path);
        isConnected = connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer() { close(socket_); }

    void say(const std::string& bytes) const {
        EXPECT_EQ(::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL), ssize_t(bytes.size()));
    }
    std::optional<Message> hear() {
        std::string bytes(4096, '\0');
        const ssize_t count = recv(socket_, bytes.data(), bytes.size(), 0);
        wasSentAway = count == 0 || (count < 0 && errno == ECONNRESET);
        decoder_.feed(std::string_view(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0));
        return decoder_.next();
    }
    bool isConnected = false;
    bool wasSentAway = false;

 private:
    int socket_;
    Decoder decoder_;
};

class HelperDoorTest : public ::testing::Test {
 protected:
    void SetUp() override { ASSERT_TRUE(door.open(path)); }
    /// Handles what is there now.
    void turn() {
        for (int found = 1; found > 0;) {
            std::vector<pollfd> waits;
            door.addTo(waits);
            found = poll(waits.data(), waits.size(), 0);
            door.handle(waits);
        }
    }
    void greet(Peer& peer) {
        ASSERT_TRUE(peer.isConnected);
        turn();
        EXPECT_EQ(peer.hear(), Message(Hello{}));
        peer.say(encode(Hello{}));
        turn();
        EXPECT_EQ(peer.hear(), Message(state));
    }

    QTemporaryDir folder;
    std::string path = folder.path().toStdString() + "/door";
    ContextState state{5, false};
    std::vector<Commit> commits;
    HelperDoor door{{[this] { return state; },
                     [this](const Commit& commit) {
                         commits.push_back(commit);
                         return commit.context == state.context;
                     }}};
};

TEST_F(HelperDoorTest, IsForItsUserOnly) {
    struct stat made {};
    ASSERT_EQ(stat(path.c_str(), &made), 0);
    EXPECT_EQ(made.st_mode & 0777U, 0600U);
}

TEST_F(HelperDoorTest, PassesTextOnAndAnswers) {
    Peer peer(path);
    greet(peer);
    peer.say(encode(Commit{1, 5, "hello"}) + encode(Commit{2, 4, "late"}));
    turn();
    EXPECT_EQ(peer.hear(), Message(Committed{1, true}));
    EXPECT_EQ(peer.hear(), Message(Committed{2, false}));
    EXPECT_EQ(commits, (std::vector<Commit>{{1, 5, "hello"}, {2, 4, "late"}}));
}

TEST_F(HelperDoorTest, TellsEveryGuestOfAnotherField) {
    Peer first(path);
    greet(first);
    Peer second(path);
    greet(second);
    state = {6, true};
    door.tellState();
    EXPECT_EQ(first.hear(), Message(state));
    EXPECT_EQ(second.hear(), Message(state));
}

TEST_F(HelperDoorTest, SendsAwayWhoSaysNoMessage) {
    for (const std::string& bad :
         {std::string("GET / HTTP/1.0\r\n\r\n"), encode(Commit{1, 5, "without a greeting"}), encode(Hello{9}),
          encode(Hello{}) + encode(ContextState{1, false})}) {
        Peer peer(path);
        turn();
        EXPECT_EQ(peer.hear(), Message(Hello{}));
        peer.say(bad);
        turn();
        while (peer.hear()) {
        }
        EXPECT_TRUE(peer.wasSentAway || !peer.hear());
        EXPECT_EQ(door.guestCount(), 0U);
    }
    EXPECT_TRUE(commits.empty());
}

TEST_F(HelperDoorTest, SurvivesAGuestThatLeavesInTheMiddleOfAMessage) {
    {
        Peer peer(path);
        greet(peer);
        peer.say(encode(Commit{1, 5, "hello"}).substr(0, 6));
        turn();
        EXPECT_EQ(door.guestCount(), 1U);
    }
    turn();
    EXPECT_EQ(door.guestCount(), 0U);
    EXPECT_TRUE(commits.empty());
    Peer next(path);
    greet(next);
}

TEST_F(HelperDoorTest, DoesNotWaitForAGuestThatDoesNotRead) {
    Peer peer(path);
    greet(peer);
    for (int change = 0; change < 1'000'000 && door.guestCount() > 0; ++change) {
        door.tellState();
    }
    EXPECT_EQ(door.guestCount(), 0U);
}

TEST_F(HelperDoorTest, HasRoomForSoMany) {
    std::list<Peer> peers;
    for (std::size_t peer = 0; peer < HelperDoor::mostGuests + 3; ++peer) {
        peers.emplace_back(path);
        turn();
    }
    EXPECT_EQ(door.guestCount(), HelperDoor::mostGuests);
}

TEST_F(HelperDoorTest, GivesItsNameToALaterOne) {
    {
        HelperDoor later({[] { return ContextState{9, false}; }, [](const Commit&) { return true; }});
        ASSERT_TRUE(later.open(path));
        Peer peer(path);
        std::vector<pollfd> waits;
        later.addTo(waits);
        ASSERT_EQ(poll(waits.data(), waits.size(), 0), 1);
        later.handle(waits);
        EXPECT_EQ(later.guestCount(), 1U);
        EXPECT_EQ(door.guestCount(), 0U);
    }
    EXPECT_NE(access(path.c_str(), F_OK), 0) << "its name goes with the later one";
}

TEST_F(HelperDoorTest, LeavesTheNameOfALaterOneAlone) {
    auto first = std::make_unique<HelperDoor>(
        HelperDoor::Work{[] { return ContextState{}; }, [](const Commit&) { return true; }});
    const std::string other = path + "2";
    ASSERT_TRUE(first->open(other));
    HelperDoor later({[] { return ContextState{}; }, [](const Commit&) { return true; }});
    ASSERT_TRUE(later.open(other));
    first.reset();
    EXPECT_EQ(access(other.c_str(), F_OK), 0);
}

TEST_F(HelperDoorTest, SaysWhenItCannotOpen) {
    HelperDoor nowhere({[] { return ContextState{}; }, [](const Commit&) { return true; }});
    EXPECT_FALSE(nowhere.open(folder.path().toStdString() + "/missing/door"));
    HelperDoor tooLong({[] { return ContextState{}; }, [](const Commit&) { return true; }});
    EXPECT_FALSE(tooLong.open(std::string(200, 'x')));
}

} // namespace

} // namespace lorvane::helper
