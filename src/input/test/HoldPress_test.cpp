// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/HoldPress.h"

#include "base/testing/VirtualClock.h"
#include "input/KeyEvents.h"
#include "input/testing/FakeHoldRoad.h"

#include <QStringList>
#include <gtest/gtest.h>

#include <memory>

namespace lorvane {

namespace {

using std::chrono::milliseconds;

class HoldPressTest : public ::testing::Test {
 protected:
    void use(ChordSight chords) {
        press = std::make_unique<HoldPress>(
            clock, road, HoldKeyOffer{keyCode::rightControl, true, chords},
            HoldPressListener{
                [this](bool isDown, Instant time) { note(isDown ? "down" : "up", time); },
                [this](Instant time) { note("other", time); },
            });
    }
    void note(const char* what, Instant time) {
        told.append(QStringLiteral("%1 %2").arg(QLatin1String(what)).arg(inMilliseconds(time)));
    }
    static qint64 inMilliseconds(Instant time) {
        return std::chrono::duration_cast<milliseconds>(time.time_since_epoch()).count();
    }
    void down() { press->handle(HoldEdgeKind::down, clock.now()); }
    void up() { press->handle(HoldEdgeKind::up, clock.now()); }
    void lost() { press->handle(HoldEdgeKind::lost, clock.now()); }
    void pass(int count) { clock.advance(milliseconds(count)); }
    void isHeld(bool held) { road.held = held ? std::set{keyCode::rightControl} : std::set<int>(); }

    VirtualClock clock;
    FakeHoldRoad road{clock, "fake", {}};
    std::unique_ptr<HoldPress> press;
    QStringList told;
};

TEST_F(HoldPressTest, PressIsToldAtOnceWhereOtherKeysAreToldOrDoNotMatter) {
    for (const ChordSight chords : {ChordSight::told, ChordSight::dedicated}) {
        told.clear();
        use(chords);
        down();
        EXPECT_EQ(told.size(), 1) << static_cast<int>(chords);
        EXPECT_TRUE(press->isDown());
    }
}

TEST_F(HoldPressTest, PressWaitsOutTheThresholdWhereAChordCannotBeTold) {
    for (const ChordSight chords : {ChordSight::endsHold, ChordSight::losesRelease, ChordSight::unseen}) {
        told.clear();
        use(chords);
        const qint64 pressed = inMilliseconds(clock.now());
        down();
        pass(249);
        EXPECT_EQ(told.size(), 0) << static_cast<int>(chords);
        pass(1);
        EXPECT_EQ(told, QStringList({QStringLiteral("down %1").arg(pressed)})) << static_cast<int>(chords);
    }
}

TEST_F(HoldPressTest, ThresholdCountsFromTheKeyAndNotFromItsArrival) {
    use(ChordSight::unseen);
    pass(200);
    press->handle(HoldEdgeKind::down, Instant());
    pass(50);
    EXPECT_EQ(told, QStringList({"down 0"}));
}

TEST_F(HoldPressTest, ShortPressIsATapWhereItCannotBeAChord) {
    use(ChordSight::losesRelease);
    down();
    pass(100);
    up();
    EXPECT_EQ(told, QStringList({"down 0", "up 100"}));
}

TEST_F(HoldPressTest, ShortPressIsNothingWhereItMayBeAChord) {
    for (const ChordSight chords : {ChordSight::endsHold, ChordSight::unseen}) {
        use(chords);
        down();
        pass(100);
        up();
        pass(1000);
        EXPECT_EQ(told, QStringList()) << static_cast<int>(chords);
    }
}

TEST_F(HoldPressTest, PressJustOverTheThresholdIsNoTapWhereItMayBeAChord) {
    use(ChordSight::unseen);
    down();
    pass(349);
    up();
    EXPECT_EQ(told, QStringList({"down 0", "other 349", "up 349"}));
    told.clear();
    down();
    pass(350);
    up();
    EXPECT_EQ(told, QStringList({"down 349", "up 699"}));
}

TEST_F(HoldPressTest, RepeatsAreDropped) {
    use(ChordSight::dedicated);
    down();
    for (int i = 0; i < 20; ++i) {
        pass(40);
        down();
    }
    up();
    up();
    EXPECT_EQ(told, QStringList({"down 0", "up 800"}));
}

TEST_F(HoldPressTest, SecondPressAfterALostReleaseIsPartOfTheSameHold) {
    use(ChordSight::losesRelease);
    down();
    pass(5000);
    down();
    pass(1000);
    up();
    EXPECT_EQ(told, QStringList({"down 0", "up 6000"}));
}

TEST_F(HoldPressTest, LostReleaseIsFoundByAskingTwice) {
    use(ChordSight::told);
    isHeld(true);
    down();
    pass(3000);
    EXPECT_EQ(told, QStringList({"down 0"}));
    isHeld(false);
    pass(100);
    EXPECT_EQ(told, QStringList({"down 0"}));
    pass(100);
    EXPECT_EQ(told, QStringList({"down 0", "up 3100"}));
}

TEST_F(HoldPressTest, ReleaseThatOnlyComesLateKeepsItsTime) {
    use(ChordSight::told);
    isHeld(false);
    down();
    pass(150);
    press->handle(HoldEdgeKind::up, Instant(milliseconds(90)));
    EXPECT_EQ(told, QStringList({"down 0", "up 90"}));
}

TEST_F(HoldPressTest, StateThatSaysUpOnceAndThenDownChangesNothing) {
    use(ChordSight::told);
    isHeld(false);
    down();
    pass(150);
    isHeld(true);
    pass(100);
    isHeld(false);
    pass(100);
    EXPECT_EQ(told, QStringList({"down 0"}));
}

TEST_F(HoldPressTest, ReleaseThatIsLostInTheFirstSecondWasAChord) {
    use(ChordSight::losesRelease);
    isHeld(true);
    down();
    pass(500);
    isHeld(false);
    pass(1000);
    EXPECT_EQ(told, QStringList({"down 0", "other 550", "up 550"}));
}

TEST_F(HoldPressTest, ReleaseThatIsLostLaterEndsTheHold) {
    use(ChordSight::losesRelease);
    isHeld(true);
    down();
    pass(2000);
    isHeld(false);
    pass(1000);
    EXPECT_EQ(told, QStringList({"down 0", "up 2050"}));
}

TEST_F(HoldPressTest, ChordThatIsOverByTheThresholdIsNeverToldWhereTheStateCanBeAsked) {
    use(ChordSight::losesRelease);
    isHeld(false);
    down();
    pass(5000);
    EXPECT_EQ(told, QStringList());
    isHeld(true);
    down();
    pass(250);
    EXPECT_EQ(told, QStringList({"down 5000"}));
}

TEST_F(HoldPressTest, PressAfterAChordThatLostItsReleaseIsAHoldOfItsOwn) {
    use(ChordSight::told);
    down();
    pass(500);
    press->noteOtherKey(clock.now());
    pass(1000);
    down();
    EXPECT_EQ(told, QStringList({"down 0", "up 1500", "down 1500"}));
}

TEST_F(HoldPressTest, KeyThatIsBumpedAfterTheFirstSecondDoesNotSplitTheHold) {
    use(ChordSight::told);
    down();
    pass(1000);
    press->noteOtherKey(clock.now());
    pass(1000);
    down();
    EXPECT_EQ(told, QStringList({"down 0"}));
}

TEST_F(HoldPressTest, HoldEndsAtTheLimitWhereNobodyCanBeAsked) {
    use(ChordSight::losesRelease);
    down();
    clock.advance(milliseconds(250) + HoldPress::unsureLimit - milliseconds(1));
    EXPECT_TRUE(press->isDown());
    pass(1);
    EXPECT_EQ(told, QStringList({"down 0", "up 120250"}));
}

TEST_F(HoldPressTest, HoldWhoseReleaseIsNotLostByChordsHasTheLongLimit) {
    use(ChordSight::unseen);
    down();
    clock.advance(milliseconds(250) + HoldPress::limit - milliseconds(1));
    EXPECT_TRUE(press->isDown());
    pass(1);
    EXPECT_FALSE(press->isDown());
}

TEST_F(HoldPressTest, HoldOfAnyLengthGoesOnWhileTheStateSaysSo) {
    use(ChordSight::losesRelease);
    isHeld(true);
    down();
    clock.advance(2 * HoldPress::limit);
    EXPECT_TRUE(press->isDown());
    road.held.reset();
    clock.advance(HoldPress::unsureLimit);
    EXPECT_FALSE(press->isDown());
}

TEST_F(HoldPressTest, NobodyIsAskedAgainWhereItCannotBeAsked) {
    use(ChordSight::unseen);
    down();
    pass(10000);
    EXPECT_EQ(road.stateQueries, 2); // at the threshold and once while it is held
}

TEST_F(HoldPressTest, NothingRunsAfterTheRelease) {
    use(ChordSight::told);
    isHeld(true);
    down();
    pass(1000);
    up();
    EXPECT_EQ(clock.pendingTimers(), 0U);
}

TEST_F(HoldPressTest, ReleaseAtAnotherKeyEndsTheHoldWhereItCannotBeAsked) {
    use(ChordSight::endsHold);
    down();
    pass(2000);
    up();
    pass(49);
    EXPECT_TRUE(press->isDown()); // what the other key means comes first
    pass(1);
    EXPECT_EQ(told, QStringList({"down 0", "up 2000"}));
}

TEST_F(HoldPressTest, ReleaseAtAnotherKeyIsTheOtherKeyWhereTheKeyIsStillHeld) {
    use(ChordSight::endsHold);
    isHeld(true);
    down();
    pass(2000);
    up();
    pass(50);
    EXPECT_EQ(told, QStringList({"down 0", "other 2000"}));
    EXPECT_TRUE(press->isDown());
    isHeld(false);
    pass(200);
    EXPECT_EQ(told, QStringList({"down 0", "other 2000", "up 2150"}));
}

TEST_F(HoldPressTest, PressThatComesWhileAReleaseIsBeingAskedForIsAHoldOfItsOwn) {
    use(ChordSight::endsHold);
    isHeld(true);
    down();
    pass(2000);
    road.answerDelay = milliseconds(100);
    up();
    pass(50);
    down();
    EXPECT_EQ(told, QStringList({"down 0", "up 2000"}));
    pass(350);
    EXPECT_EQ(told, QStringList({"down 0", "up 2000", "down 2050"}));
}

TEST_F(HoldPressTest, KeyThatIsLostSightOfIsReleasedUnlessTheStateSaysHeld) {
    use(ChordSight::told);
    isHeld(true);
    down();
    pass(1000);
    lost();
    pass(50);
    EXPECT_TRUE(press->isDown());
    isHeld(false);
    lost();
    pass(50);
    EXPECT_EQ(told, QStringList({"down 0", "up 1050"}));
    road.held.reset();
    down();
    pass(900);
    lost();
    pass(50);
    EXPECT_EQ(told.mid(2), QStringList({"down 1100", "up 2000"}));
}

TEST_F(HoldPressTest, KeyThatIsLostSightOfIsDownForAMomentYetSoThatEscapeComesFirst) {
    use(ChordSight::told);
    down();
    pass(1000);
    lost();
    pass(49);
    EXPECT_TRUE(press->isDown());
    pass(1);
    EXPECT_FALSE(press->isDown());
}

TEST_F(HoldPressTest, RoadThatGoesEndsTheHold) {
    use(ChordSight::unseen);
    down();
    pass(1000);
    press->end();
    press->end();
    EXPECT_EQ(told, QStringList({"down 0", "up 1000"}));
}

TEST_F(HoldPressTest, RoadThatGoesDuringTheWaitIsNothing) {
    use(ChordSight::unseen);
    down();
    press->end();
    pass(1000);
    EXPECT_EQ(told, QStringList());
}

TEST_F(HoldPressTest, RoadThatTellsPressAndReleaseTogetherIsBlindToHolding) {
    use(ChordSight::endsHold);
    for (int i = 0; i < 2; ++i) {
        down();
        up();
        pass(1000);
        EXPECT_FALSE(press->isBlindToHolding());
    }
    down();
    up();
    EXPECT_TRUE(press->isBlindToHolding());
}

TEST_F(HoldPressTest, OneTrueReleaseShowsThatARoadIsNotBlind) {
    use(ChordSight::endsHold);
    for (int i = 0; i < 10; ++i) {
        down();
        pass(i % 3 == 2 ? 60 : 0);
        up();
        pass(1000);
        EXPECT_FALSE(press->isBlindToHolding()) << i;
    }
}

TEST_F(HoldPressTest, TimesOutOfOrderAreSetRight) {
    use(ChordSight::told);
    pass(1000);
    press->handle(HoldEdgeKind::down, clock.now() + milliseconds(500));
    press->handle(HoldEdgeKind::up, Instant());
    EXPECT_EQ(told, QStringList({"down 1000", "up 1000"}));
}

} // namespace

} // namespace lorvane
