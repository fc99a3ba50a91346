// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/SessionKeys.h"

#include "base/testing/TestFoundation.h"
#include "core/testing/FakePasteKeys.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

class SessionPasteKeysTest : public ::testing::Test {
 protected:
    void SetUp() override {
        keys.onKeys = [this] { events.append("clipboard"); };
        first.onPosted = [this] { events.append("first"); };
        second.onPosted = [this] { events.append("second"); };
        ofX.onPosted = [this] { events.append("x"); };
    }
    Road<PasteKeys> road(PasteKeys& port, const QString& name) {
        return {&port, name, [this, name] { return closed.contains(name) ? QString("closed") : QString(); }};
    }
    std::optional<KeysOutcome> post(Duration time = std::chrono::seconds(1)) {
        std::optional<KeysOutcome> outcome;
        const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
            const PasteKeys::Aim aim = [this] {
                events.append("aim");
                return PasteRoute::terminal;
            };
            outcome = co_await keys.post(aim, scope);
        });
        base.clock.advance(time);
        return outcome;
    }

    TestFoundation base;
    FakePasteKeys first{base.clock};
    FakePasteKeys second{base.clock};
    FakePasteKeys ofX{base.clock};
    bool isXInFront = false;
    QStringList closed;
    QStringList events;
    SessionPasteKeys keys{[this] { return isXInFront; },
                          road(ofX, "x"),
                          {road(first, "first"), road(second, "second")},
                          base.foundation.log};
};

TEST_F(SessionPasteKeysTest, TheFirstOpenWayPostsThem) {
    EXPECT_EQ(post(), KeysOutcome::posted);
    EXPECT_EQ(events, QStringList({"aim", "clipboard", "first"}));
    EXPECT_EQ(first.posted, std::vector<PasteRoute>{PasteRoute::terminal});
    events.clear();
    closed.append("first");
    EXPECT_EQ(post(), KeysOutcome::posted);
    EXPECT_EQ(events, QStringList({"aim", "clipboard", "second"}));
}

TEST_F(SessionPasteKeysTest, KeysThatHaveSurelyNotGoneOutAreTriedTheNextWay) {
    first.outcome = KeysOutcome::notPosted;
    EXPECT_EQ(post(), KeysOutcome::posted);
    EXPECT_EQ(second.posted.size(), 1U);
    second.outcome = KeysOutcome::notPosted;
    EXPECT_EQ(post(), KeysOutcome::notPosted);
}

TEST_F(SessionPasteKeysTest, KeysThatMayHaveGoneOutAreNotPostedASecondTime) {
    first.outcome = KeysOutcome::unknown;
    EXPECT_EQ(post(), KeysOutcome::unknown);
    EXPECT_TRUE(second.posted.empty());
    EXPECT_EQ(base.lines.filter("no answer whether keys went out by first").size(), 1);
}

TEST_F(SessionPasteKeysTest, TheClipboardIsToldOnceNothingIsWaitedForAnyMore) {
    first.delay = std::chrono::milliseconds(400);
    EXPECT_EQ(post(std::chrono::milliseconds(399)), std::nullopt);
    EXPECT_TRUE(events.isEmpty());
    EXPECT_EQ(post(), KeysOutcome::posted);
    EXPECT_EQ(events, QStringList({"aim", "clipboard", "first"}));
}

TEST_F(SessionPasteKeysTest, WindowsOfXGetThemByTheirServer) {
    isXInFront = true;
    ofX.outcome = KeysOutcome::unknown;
    EXPECT_EQ(post(), KeysOutcome::unknown);
    EXPECT_EQ(events, QStringList({"aim", "clipboard", "x"}));
}

} // namespace

} // namespace lorvane
