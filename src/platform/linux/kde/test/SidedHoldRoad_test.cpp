// SPDX-License-Identifier: GPL-3.0-or-later
// The shortcut service and the X server as they were seen in KWin 5.27, either of them first.
#include "platform/linux/kde/SidedHoldRoad.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "input/HoldKeys.h"
#include "input/HoldRoadKeyEvents.h"
#include "input/HotkeyMonitor.h"
#include "input/testing/FakeHoldRoad.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace lorvane {

namespace {

using std::chrono::milliseconds;
using Edges = std::vector<std::pair<int, HoldEdgeKind>>;

constexpr int right = keyCode::rightControl;
constexpr int left = keyCode::leftControl;

class SidedHoldRoadTest : public ::testing::TestWithParam<bool> {
 protected:
    static HoldOffer shortcutOffer() {
        return {{{right, false, ChordSight::endsHold},
                 {keyCode::rightShift, false, ChordSight::endsHold},
                 {keyCode::fn, true, ChordSight::dedicated},
                 {keyCode::escape, true, ChordSight::dedicated}},
                {}};
    }
    ModifierSight sight() {
        return {[this] { return isOpen; },
                [this](ModifierSight::Observer told) {
                    observer = std::move(told);
                    return Handle([this] { observer = nullptr; });
                },
                [this] { return xDown; }};
    }
    void watch() {
        handle = road.watch({right, keyCode::fn, keyCode::escape},
                            [this](const HoldEdge& edge) { edges.emplace_back(edge.keyCode, edge.kind); });
    }
    void x(int code, bool isDown) {
        isDown ? (void)xDown.insert(code) : (void)xDown.erase(code);
        if (observer) {
            observer(code, isDown, base.clock.now());
        }
    }
    void shortcut(bool isDown) { shortcuts.tell(right, isDown ? HoldEdgeKind::down : HoldEdgeKind::up); }
    /// A key that both tell of, the one or the other first.
    void both(int code, bool isDown) {
        if (GetParam()) {
            x(code, isDown);
        }
        shortcut(isDown);
        if (!GetParam()) {
            base.clock.advance(milliseconds(20));
            x(code, isDown);
        }
    }
    void wait(int time = 60) { base.clock.advance(milliseconds(time)); }
    Edges told() { return std::exchange(edges, {}); }
    /// As KWin tells of Ctrl and another key: the X server hears of no release.
    void chord(int code) {
        both(code, true);
        wait(120);
        shortcut(false);
        wait();
    }

    TestFoundation base;
    FakeHoldRoad shortcuts{base.clock, "shortcuts", shortcutOffer()};
    bool isOpen = true;
    std::set<int> xDown;
    ModifierSight::Observer observer;
    SidedHoldRoad road{base.clock, shortcuts, sight()};
    Edges edges;
    Handle handle;
};

const Edges pressAndRelease{{right, HoldEdgeKind::down}, {right, HoldEdgeKind::up}};
const Edges pressAndChord{
    {right, HoldEdgeKind::down}, {firstOtherKeyCode, HoldEdgeKind::down}, {right, HoldEdgeKind::lost}};

INSTANTIATE_TEST_SUITE_P(XFirst, SidedHoldRoadTest, ::testing::Values(true));
INSTANTIATE_TEST_SUITE_P(ShortcutFirst, SidedHoldRoadTest, ::testing::Values(false));

TEST_P(SidedHoldRoadTest, OffersModifiersWithTheirSidesAndTheRestAsItIs) {
    EXPECT_EQ(road.offer().keys, (std::vector<HoldKeyOffer>{{right, true, ChordSight::told},
                                                            {keyCode::rightShift, true, ChordSight::told},
                                                            {keyCode::fn, true, ChordSight::dedicated},
                                                            {keyCode::escape, true, ChordSight::dedicated}}));
    isOpen = false;
    road.reconsider();
    EXPECT_EQ(road.offer(), shortcutOffer());
}

TEST_P(SidedHoldRoadTest, APressThatComesWhenItsChordIsOverLeavesNoHoldOpen) {
    watch();
    shortcut(true);
    shortcut(false);
    wait();
    (void)told();
    x(right, true);
    wait(300);
    EXPECT_EQ(told(), pressAndChord);
    both(right, true);
    EXPECT_EQ(told(), Edges({{right, HoldEdgeKind::down}}));
    wait(3000);
    EXPECT_TRUE(told().empty());
}

TEST_P(SidedHoldRoadTest, TellsTheRightKeyAtItsPressAndItsRelease) {
    watch();
    both(right, true);
    EXPECT_EQ(told(), Edges({{right, HoldEdgeKind::down}}));
    wait(3000);
    both(right, false);
    wait();
    EXPECT_EQ(told(), Edges({{right, HoldEdgeKind::up}}));
}

TEST_P(SidedHoldRoadTest, TellsNothingOfTheLeftTwin) {
    watch();
    for (int i = 0; i < 3; ++i) {
        both(left, true);
        wait(400);
        both(left, false);
        wait();
    }
    EXPECT_EQ(told(), Edges());
}

TEST_P(SidedHoldRoadTest, TellsAChordAndLosesTheKey) {
    watch();
    chord(right);
    EXPECT_EQ(told(), pressAndChord);
}

TEST_P(SidedHoldRoadTest, TellsThePressThatTheXServerMissesAfterAChord) {
    watch();
    chord(right);
    (void)told();
    shortcut(true);
    wait();
    EXPECT_EQ(told(), Edges({{right, HoldEdgeKind::down}}));
    wait(1000);
    both(right, false);
    wait();
    EXPECT_EQ(told(), Edges({{right, HoldEdgeKind::up}}));
    both(right, true);
    both(right, false);
    wait();
    EXPECT_EQ(told(), pressAndRelease);
}

TEST_P(SidedHoldRoadTest, KnowsAfterAChordOfTheTwinWhoseThePressIs) {
    watch();
    chord(left);
    shortcut(true); // the twin's, which the X server misses
    wait();
    both(left, false);
    EXPECT_EQ(told(), Edges());
    chord(left);
    both(right, true);
    wait();
    both(right, false);
    wait();
    EXPECT_EQ(told(), pressAndRelease);
}

TEST_P(SidedHoldRoadTest, KnowsStaleKeysFromTheBeginning) {
    xDown = {left};
    watch();
    shortcut(true);
    wait();
    both(left, false);
    wait();
    EXPECT_EQ(told(), Edges());
}

TEST_P(SidedHoldRoadTest, TakesTheShortcutsWordWhereTheXServerTellsNothing) {
    watch();
    shortcut(true);
    wait(1000);
    shortcut(false);
    wait();
    EXPECT_EQ(told(), pressAndRelease);
    shortcut(true);
    wait(200);
    shortcut(false);
    wait();
    EXPECT_EQ(told(), Edges({{right, HoldEdgeKind::down},
                             {firstOtherKeyCode, HoldEdgeKind::down},
                             {right, HoldEdgeKind::up}}))
        << "which may be a chord";
}

TEST_P(SidedHoldRoadTest, TakesAPressBackThatTurnsOutToBeTheTwins) {
    watch();
    shortcut(true);
    wait();
    x(left, true);
    EXPECT_EQ(told(), pressAndChord);
    shortcut(false);
    x(left, false);
    EXPECT_EQ(told(), Edges());
}

TEST_P(SidedHoldRoadTest, TellsATapThatIsShorterThanTheWait) {
    watch();
    chord(right);
    (void)told();
    shortcut(true);
    wait(20);
    shortcut(false);
    x(right, false);
    wait();
    EXPECT_EQ(told(), pressAndRelease);
}

TEST_P(SidedHoldRoadTest, PassesOtherKeysOn) {
    watch();
    shortcuts.tell(keyCode::escape, HoldEdgeKind::down);
    shortcuts.tell(keyCode::fn, HoldEdgeKind::down);
    shortcuts.tell(keyCode::fn, HoldEdgeKind::up);
    EXPECT_EQ(told(), Edges({{keyCode::escape, HoldEdgeKind::down},
                             {keyCode::fn, HoldEdgeKind::down},
                             {keyCode::fn, HoldEdgeKind::up}}));
}

TEST_P(SidedHoldRoadTest, LetsEscapeComeBeforeTheEndOfTheHoldThatItCauses) {
    for (const bool isSeen : {true, false}) {
        watch();
        isSeen ? both(right, true) : shortcut(true);
        wait(1200);
        shortcut(false);
        shortcuts.tell(keyCode::escape, HoldEdgeKind::down);
        wait();
        ASSERT_EQ(edges.size(), isSeen ? 4U : 3U);
        EXPECT_EQ(edges[1], std::pair(int{keyCode::escape}, HoldEdgeKind::down));
        edges.clear();
        xDown.clear();
        handle.reset();
    }
}

TEST_P(SidedHoldRoadTest, LosesAHeldKeyWithTheService) {
    watch();
    both(right, true);
    shortcuts.tell(right, HoldEdgeKind::lost);
    EXPECT_EQ(told(), Edges({{right, HoldEdgeKind::down}, {right, HoldEdgeKind::lost}}));
}

TEST_P(SidedHoldRoadTest, IsTheShortcutRoadWhileTheSightIsClosed) {
    isOpen = false;
    road.reconsider();
    watch();
    EXPECT_FALSE(observer) << "nothing is watched that is not needed";
    shortcut(true);
    shortcut(false);
    EXPECT_EQ(told(), pressAndRelease);
    isOpen = true;
    road.reconsider();
    both(right, true);
    both(right, false);
    wait();
    EXPECT_EQ(told(), pressAndRelease);
    handle.reset();
    EXPECT_FALSE(observer);
    EXPECT_TRUE(shortcuts.watched().empty());
}

TEST_P(SidedHoldRoadTest, KeepsAPressOverAChangeOfTheWatch) {
    watch();
    both(right, true);
    auto before = std::move(handle);
    watch();
    before.reset();
    both(right, false);
    wait();
    EXPECT_EQ(told(), pressAndRelease);
}

TEST_P(SidedHoldRoadTest, TellsEachOfAThousandPressesByItsSideAndLeavesNoneOpen) {
    watch();
    std::mt19937 random(7);
    const auto upTo = [&](int most) { return static_cast<int>(random() % static_cast<unsigned>(most)); };
    for (int i = 0; i < 1000; ++i) {
        const int code = upTo(3) == 0 ? left : right;
        const bool isChord = upTo(4) == 0;
        const bool isEither = xDown.contains(left) && xDown.contains(right);
        // The X server misses the press of a key whose release it has missed.
        xDown.contains(code) ? shortcut(true) : both(code, true);
        wait(30 + upTo(isChord ? 300 : 3000));
        isChord ? shortcut(false) : both(code, false);
        wait(100 + upTo(400));
        const Edges edgesNow = told();
        if (code == right) {
            EXPECT_EQ(edgesNow, isChord ? pressAndChord : pressAndRelease) << i;
        } else if (!isEither) {
            EXPECT_EQ(edgesNow, Edges()) << i;
        } else {
            const auto downs = std::count(edgesNow.begin(), edgesNow.end(), pressAndRelease[0]);
            const auto ends = std::count_if(edgesNow.begin(), edgesNow.end(), [](const auto& edge) {
                return edge.first == right && edge.second != HoldEdgeKind::down;
            });
            EXPECT_EQ(downs, ends) << i;
        }
    }
}

TEST_P(SidedHoldRoadTest, MakesTheGesturesOfX11) {
    base.preferences.set(preference::hotkey, QString(rawName(Hotkey::rightControl)));
    base.preferences.set(preference::toggleHotkey, QString());
    HoldRoadKeyEvents keys(base.foundation, {&road}, [] { return false; });
    HotkeyMonitor monitor(keys);
    QStringList gestures;
    monitor.hotkey = Hotkey::rightControl;
    monitor.toggleHotkey = std::nullopt;
    monitor.onHoldBegan = [&] { gestures.append("began"); };
    monitor.onHoldEnded = [&](bool wasTap) { gestures.append(wasTap ? "tap" : "ended"); };
    monitor.onInterrupted = [&] { gestures.append("interrupted"); };
    monitor.start();
    wait(1);
    const auto press = [&](int time) {
        both(right, true);
        wait(time);
        both(right, false);
        wait(200);
        return std::exchange(gestures, {});
    };
    EXPECT_EQ(press(1000), QStringList({"began", "ended"}));
    EXPECT_EQ(press(200), QStringList({"began", "tap"}));
    chord(left);
    wait(200);
    EXPECT_EQ(gestures, QStringList());
    EXPECT_EQ(press(1000), QStringList({"began", "ended"})) << "the twin's missing release does not matter";
    chord(right);
    wait(200);
    EXPECT_EQ(std::exchange(gestures, {}), QStringList({"began", "interrupted"}));
    shortcut(true); // the press that the X server misses
    wait(1000);
    both(right, false);
    wait(200);
    EXPECT_EQ(std::exchange(gestures, {}), QStringList({"began", "ended"}));
    EXPECT_EQ(press(1000), QStringList({"began", "ended"}));
}

} // namespace

} // namespace lorvane
