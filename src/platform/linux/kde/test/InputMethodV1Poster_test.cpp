// SPDX-License-Identifier: GPL-3.0-or-later
// The program's end against a socket whose other end the test plays.
#include "platform/linux/kde/InputMethodV1Poster.h"

#include "base/testing/TestFoundation.h"
#include "support/Wait.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace lorvane {

namespace {

using helper::Committed;
using helper::ContextState;
using helper::Hello;

/// Plays the helper by hand.
class PlayedHelper {
 public:
    explicit PlayedHelper(const std::string& path)
        : listener_(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy(path.begin(), path.end(), address.sun_path);
        unlink(path.c_str());
        EXPECT_EQ(bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
        EXPECT_EQ(listen(listener_, 4), 0);
    }
    PlayedHelper(const PlayedHelper&) = delete;
    PlayedHelper& operator=(const PlayedHelper&) = delete;
    ~PlayedHelper() {
        hangUp();
        close(listener_);
    }

    bool takesGuest() {
        return waitUntil([this] {
            guest_ = accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK);
            return guest_ >= 0;
        });
    }
    void say(const std::string& bytes) {
        EXPECT_EQ(::send(guest_, bytes.data(), bytes.size(), MSG_NOSIGNAL), ssize_t(bytes.size()));
    }
    std::optional<helper::Message> hear() {
        std::optional<helper::Message> heard;
        const bool wasSaid = waitUntil([&] {
            std::string bytes(4096, '\0');
            const ssize_t count = recv(guest_, bytes.data(), bytes.size(), 0);
            decoder_.feed(std::string_view(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0));
            heard = decoder_.next();
            return heard.has_value();
        });
        EXPECT_TRUE(wasSaid);
        return heard;
    }
    void hangUp() {
        if (guest_ >= 0) {
            close(guest_);
            guest_ = -1;
        }
    }

 private:
    int listener_;
    int guest_ = -1;
    helper::Decoder decoder_;
};

class InputMethodV1PosterTest : public ::testing::Test {
 protected:
    void SetUp() override { played.emplace(path.toStdString()); }
    void ask() {
        can.reset();
        task = startTask([this](TaskScope scope) -> QCoro::Task<void> {
            const PostingTarget target{{}, FieldElement(QString()), 0};
            const bool answer = co_await poster.canPost(target, scope);
            can = answer;
        });
    }
    void post(const QString& text) {
        outcome.reset();
        task = startTask([this, text](TaskScope scope) -> QCoro::Task<void> {
            const PostingTarget target{{}, FieldElement(QString()), 0};
            const PostOutcome answer = co_await poster.post(target, text, scope);
            outcome = answer;
        });
    }
    /// A helper that has greeted and told of a field.
    void open(const ContextState& state) {
        ask();
        ASSERT_TRUE(played->takesGuest());
        EXPECT_EQ(played->hear(), helper::Message(Hello{}));
        played->say(helper::encode(Hello{}) + helper::encode(state));
        ASSERT_TRUE(waitUntil([this] { return can.has_value(); }));
    }
    bool isPosted(PostOutcome wanted) {
        return waitUntil([this] { return outcome.has_value(); }) && outcome == wanted;
    }

    TestFoundation world;
    QTemporaryDir folder;
    QString path = folder.path() + QStringLiteral("/helper");
    std::optional<PlayedHelper> played;
    HelperLink link{world.clock, world.log, path};
    InputMethodV1Poster poster{link};
    std::optional<bool> can;
    std::optional<PostOutcome> outcome;
    TaskHandle task;
};

TEST_F(InputMethodV1PosterTest, PostsIntoTheFieldThatTheHelperTells) {
    open({3, false});
    EXPECT_TRUE(*can);
    post(QStringLiteral("dé 😀"));
    EXPECT_EQ(played->hear(), helper::Message(helper::Commit{1, 3, "d\xC3\xA9 \xF0\x9F\x98\x80"}));
    EXPECT_FALSE(outcome) << "on its way only when the helper says so";
    played->say(helper::encode(Committed{1, true}));
    EXPECT_TRUE(isPosted(PostOutcome::posted));
}

TEST_F(InputMethodV1PosterTest, IsNotOfferedWithoutAFieldNorInASecretOne) {
    open({0, false});
    EXPECT_FALSE(*can);
    played->say(helper::encode(ContextState{4, true}));
    ASSERT_TRUE(waitUntil([this] {
        post(QStringLiteral("secret"));
        return outcome == PostOutcome::refused;
    }));
    ask();
    EXPECT_EQ(can, false);
}

TEST_F(InputMethodV1PosterTest, RefusesWhenTheFieldHasGoneMeanwhile) {
    open({3, false});
    played->say(helper::encode(ContextState{0, false}));
    ASSERT_TRUE(waitUntil([this] {
        ask();
        return can == false;
    }));
    post(QStringLiteral("late"));
    EXPECT_EQ(outcome, PostOutcome::refused);
}

TEST_F(InputMethodV1PosterTest, RefusesWhatTheHelperRefused) {
    open({3, false});
    post(QStringLiteral("x"));
    (void)played->hear();
    played->say(helper::encode(Committed{1, false}));
    EXPECT_TRUE(isPosted(PostOutcome::refused));
}

TEST_F(InputMethodV1PosterTest, DoesNotKnowWhatASilentHelperDid) {
    open({3, false});
    post(QStringLiteral("x"));
    (void)played->hear();
    world.clock.advance(std::chrono::milliseconds(149));
    EXPECT_FALSE(outcome);
    world.clock.advance(std::chrono::milliseconds(1));
    EXPECT_EQ(outcome, PostOutcome::unknown);
    played->say(helper::encode(Committed{1, true}));
    post(QStringLiteral("y"));
    EXPECT_EQ(played->hear(), helper::Message(helper::Commit{2, 3, "y"}));
    played->say(helper::encode(Committed{2, true}));
    EXPECT_TRUE(isPosted(PostOutcome::posted)) << "a late answer to another request does not count";
}

TEST_F(InputMethodV1PosterTest, GoesWithoutAHelperThatDoesNotGreet) {
    ask();
    ASSERT_TRUE(played->takesGuest());
    EXPECT_FALSE(can);
    world.clock.advance(std::chrono::milliseconds(150));
    EXPECT_EQ(can, false);
}

TEST_F(InputMethodV1PosterTest, GoesWithoutAHelperThatIsNotThere) {
    played.reset();
    ask();
    EXPECT_EQ(can, false);
    EXPECT_FALSE(link.isThere());
}

TEST_F(InputMethodV1PosterTest, LeavesAHelperThatSaysNoMessage) {
    using namespace std::string_literals;
    for (const std::string& bad : {"\xFF\xFF\x03"s, helper::encode(Hello{2}),
                                   helper::encode(ContextState{3, false}), // before it has greeted
                                   helper::encode(Hello{}) + helper::encode(helper::Commit{1, 1, "x"})}) {
        ask();
        ASSERT_TRUE(played->takesGuest());
        (void)played->hear();
        played->say(bad);
        EXPECT_TRUE(waitUntil([this] { return can == false; }));
        played->hangUp();
        played.emplace(path.toStdString());
    }
}

TEST_F(InputMethodV1PosterTest, DoesNotKnowWhatAHelperDidThatEndedMeanwhileAndFindsTheNextOne) {
    open({3, false});
    post(QStringLiteral("x"));
    (void)played->hear();
    played->say(helper::encode(Committed{1, true}).substr(0, 4));
    played->hangUp();
    EXPECT_TRUE(isPosted(PostOutcome::unknown));
    played.emplace(path.toStdString());
    open({1, false});
    EXPECT_TRUE(*can);
}

TEST_F(InputMethodV1PosterTest, HandsNoControlCharactersOver) {
    open({3, false});
    post(QStringLiteral("a\nb"));
    EXPECT_EQ(outcome, PostOutcome::refused);
    EXPECT_FALSE(poster.takesLineBreaks());
}

} // namespace

} // namespace lorvane
