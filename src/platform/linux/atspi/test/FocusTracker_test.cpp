// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/FocusTracker.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

using Kind = FocusEvent::Kind;

const QString editor = QStringLiteral(":1.10");
const QString browser = QStringLiteral(":1.20");

class FocusTrackerTest : public ::testing::Test {
 protected:
    void say(Kind kind, const QString& bus, const char* path) {
        tracker.handle({kind, {bus, QString::fromUtf8(path)}});
    }
    QString focus(const QString& bus) const {
        const auto held = tracker.focusOf(bus);
        return held ? held->path : QStringLiteral("none");
    }

    FocusTracker tracker;
};

TEST_F(FocusTrackerTest, NothingIsKnownBeforeAnEvent) {
    EXPECT_EQ(focus(editor), QStringLiteral("none"));
    EXPECT_TRUE(tracker.applications().isEmpty());
}

TEST_F(FocusTrackerTest, TheLastThatGainedTheFocusHasIt) {
    say(Kind::focusGained, editor, "/1");
    say(Kind::focusGained, editor, "/2");
    say(Kind::focusGained, editor, "/2");
    EXPECT_EQ(focus(editor), QStringLiteral("/2"));
}

TEST_F(FocusTrackerTest, LosingIsBelievedOfTheFieldThatHasIt) {
    say(Kind::focusGained, editor, "/1");
    say(Kind::focusLost, editor, "/1");
    EXPECT_EQ(focus(editor), QStringLiteral("none"));
}

TEST_F(FocusTrackerTest, ALateLossOfAnotherFieldSaysNothing) {
    say(Kind::focusGained, editor, "/1");
    say(Kind::focusGained, editor, "/2");
    say(Kind::focusLost, editor, "/1");
    EXPECT_EQ(focus(editor), QStringLiteral("/2"));
}

// Inside a page the loss comes first.
TEST_F(FocusTrackerTest, LossThenGainLeavesTheGain) {
    say(Kind::focusGained, browser, "/1");
    say(Kind::focusLost, browser, "/1");
    say(Kind::focusGained, browser, "/2");
    EXPECT_EQ(focus(browser), QStringLiteral("/2"));
}

// Qt and Chromium: a window that is left sends no loss of its field.
TEST_F(FocusTrackerTest, ADeactivatedWindowTakesTheFocusOfItsApplicationAway) {
    say(Kind::windowActivated, editor, "/w");
    say(Kind::focusGained, editor, "/1");
    say(Kind::windowDeactivated, editor, "/w");
    EXPECT_EQ(focus(editor), QStringLiteral("none"));
}

TEST_F(FocusTrackerTest, ALateDeactivationOfAnotherWindowOfTheSameApplicationSaysNothing) {
    say(Kind::windowActivated, editor, "/w1");
    say(Kind::focusGained, editor, "/1");
    say(Kind::windowActivated, editor, "/w2");
    say(Kind::focusGained, editor, "/2");
    say(Kind::windowDeactivated, editor, "/w1");
    EXPECT_EQ(focus(editor), QStringLiteral("/2"));
}

TEST_F(FocusTrackerTest, ADeactivationOfAWindowThatNeverSaidItWasActiveIsBelieved) {
    say(Kind::focusGained, editor, "/1");
    say(Kind::windowDeactivated, editor, "/w");
    EXPECT_EQ(focus(editor), QStringLiteral("none"));
}

// GTK 4 sends no window events at all.
TEST_F(FocusTrackerTest, WithoutWindowEventsGainAndLossSuffice) {
    say(Kind::focusGained, editor, "/1");
    say(Kind::focusLost, editor, "/1");
    say(Kind::focusGained, editor, "/3");
    EXPECT_EQ(focus(editor), QStringLiteral("/3"));
}

// The order of the events of two applications is not fixed: each of the orders that were seen gives the same.
TEST_F(FocusTrackerTest, TheOrderOfTwoApplicationsDoesNotMatter) {
    struct Step {
        Kind kind;
        QString bus;
        const char* path;
    };
    const Step leaves1{Kind::windowDeactivated, editor, "/w"};
    const Step leaves2{Kind::focusLost, editor, "/1"};
    const Step comes1{Kind::windowActivated, browser, "/w"};
    const Step comes2{Kind::focusGained, browser, "/5"};
    const std::vector<std::vector<Step>> orders{{leaves1, leaves2, comes1, comes2},
                                                {comes1, leaves1, comes2, leaves2},
                                                {comes1, comes2, leaves1, leaves2},
                                                {leaves1, comes1, comes2, leaves2},
                                                {comes1, comes2, leaves2, leaves1}};
    for (const auto& order : orders) {
        tracker = FocusTracker();
        say(Kind::windowActivated, editor, "/w");
        say(Kind::focusGained, editor, "/1");
        for (const auto& step : order) {
            say(step.kind, step.bus, step.path);
        }
        EXPECT_EQ(focus(editor), QStringLiteral("none"));
        EXPECT_EQ(focus(browser), QStringLiteral("/5"));
    }
}

TEST_F(FocusTrackerTest, ApplicationsComeWithTheLastGainFirst) {
    say(Kind::focusGained, editor, "/1");
    say(Kind::focusGained, browser, "/1");
    EXPECT_EQ(tracker.applications(), (QStringList{browser, editor}));
    say(Kind::focusGained, editor, "/2");
    EXPECT_EQ(tracker.applications(), (QStringList{editor, browser}));
}

TEST_F(FocusTrackerTest, AFieldFoundBySearchCountsLikeAGain) {
    tracker.remember({editor, QStringLiteral("/7")});
    EXPECT_EQ(focus(editor), QStringLiteral("/7"));
    say(Kind::focusLost, editor, "/7");
    EXPECT_EQ(focus(editor), QStringLiteral("none"));
}

TEST_F(FocusTrackerTest, AnApplicationThatIsGoneIsForgotten) {
    say(Kind::focusGained, editor, "/1");
    tracker.forget(editor);
    EXPECT_EQ(focus(editor), QStringLiteral("none"));
}

TEST_F(FocusTrackerTest, MemoryStaysBoundedOverManyApplications) {
    for (int i = 0; i < 2000; ++i) {
        say(Kind::focusGained, QStringLiteral(":2.%1").arg(i), "/1");
    }
    EXPECT_LE(tracker.applications().size(), 256);
    EXPECT_EQ(focus(QStringLiteral(":2.1999")), QStringLiteral("/1"));
    EXPECT_EQ(focus(QStringLiteral(":2.0")), QStringLiteral("none"));
}

} // namespace
} // namespace lorvane
