// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/HoldRoadKeyEvents.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "input/HoldKeys.h"
#include "input/HotkeyMonitor.h"
#include "input/testing/FakeHoldRoad.h"
#include "input/testing/KeyEventsContract.h"

#include <QStringList>

namespace lorvane {

namespace {

using std::chrono::milliseconds;

constexpr int control = keyCode::rightControl;
constexpr int shift = keyCode::rightShift;

HoldOffer offerOf(std::initializer_list<int> codes, ChordSight chords) {
    HoldOffer offer;
    for (const int code : codes) {
        offer.keys.push_back({code, true, chords});
    }
    return offer;
}

/// A keyboard whose keys come by a road that tells everything.
struct ToldKeyboard {
    void press(Hotkey key) { tell(codeOf(key), HoldEdgeKind::down); }
    void release(Hotkey key) { tell(codeOf(key), HoldEdgeKind::up); }
    void pressLeftTwin(Hotkey key) { tell(leftTwin(key), HoldEdgeKind::down); }
    void releaseLeftTwin(Hotkey key) { tell(leftTwin(key), HoldEdgeKind::up); }
    void tapEscape() { tell(keyCode::escape, HoldEdgeKind::down); }
    void tapLetter() { tell(294, HoldEdgeKind::down); }
    void setOwnFocus(bool focus) { ownFocus = focus; }
    void settle() { base.clock.advance(milliseconds(1)); }

    static int leftTwin(Hotkey key) {
        switch (key) {
        case Hotkey::rightCommand:
            return keyCode::leftCommand;
        case Hotkey::rightOption:
            return keyCode::leftOption;
        case Hotkey::rightShift:
            return keyCode::leftShift;
        default:
            return keyCode::leftControl;
        }
    }
    void tell(int code, HoldEdgeKind kind) {
        base.clock.settle(); // a new monitor is followed in the next turn
        road.tell(code, kind);
    }

    TestFoundation base;
    VirtualClock& clock = base.clock;
    FakeHoldRoad road{clock, "told",
                      offerOf({54, 60, 61, control, keyCode::fn, keyCode::escape}, ChordSight::told)};
    bool ownFocus = false;
    HoldRoadKeyEvents keys{base.foundation, {&road}, [this] { return ownFocus; }};
};

INSTANTIATE_TYPED_TEST_SUITE_P(HoldRoad, KeyEventsContract, ToldKeyboard);

class HoldRoadKeyEventsTest : public ::testing::Test {
 protected:
    void SetUp() override {
        base.preferences.set(preference::hotkey, QString(rawName(Hotkey::rightControl)));
        base.preferences.set(preference::toggleHotkey, QString(rawName(Hotkey::rightShift)));
        monitor.hotkey = Hotkey::rightControl;
        monitor.toggleHotkey = Hotkey::rightShift;
        monitor.onHoldBegan = [this] { gestures.append("began"); };
        monitor.onHoldEnded = [this](bool wasTap) { gestures.append(wasTap ? "tap" : "ended"); };
        monitor.onInterrupted = [this] { gestures.append("interrupted"); };
        monitor.onToggle = [this] { gestures.append("toggle"); };
        start();
    }
    void start() {
        monitor.start();
        base.clock.settle();
    }
    void down(FakeHoldRoad& road, int code) { road.tell(code, HoldEdgeKind::down); }
    void up(FakeHoldRoad& road, int code) { road.tell(code, HoldEdgeKind::up); }
    void pass(int count) { base.clock.advance(milliseconds(count)); }
    void hold(FakeHoldRoad& road, int code, int time) {
        down(road, code);
        pass(time);
        up(road, code);
        pass(1000);
    }
    void offers(FakeHoldRoad& road, HoldOffer offer) {
        road.setOffer(std::move(offer));
        base.clock.settle();
    }

    TestFoundation base;
    FakeHoldRoad best{base.clock, "best", offerOf({control, shift}, ChordSight::losesRelease)};
    FakeHoldRoad second{base.clock, "second", offerOf({control, shift, keyCode::escape}, ChordSight::told)};
    HoldRoadKeyEvents keys{base.foundation, {&best, &second}, [] { return false; }};
    HotkeyMonitor monitor{keys};
    QStringList gestures;
};

TEST_F(HoldRoadKeyEventsTest, KeysComeByTheFirstRoadThatOffersThem) {
    EXPECT_EQ(best.watched(), std::vector({control, shift}));
    EXPECT_EQ(second.watched(), std::vector<int>());
    EXPECT_EQ(keys.holdRoad(), &best);
    EXPECT_EQ(keys.handsFreeRoad(), &best);
}

TEST_F(HoldRoadKeyEventsTest, EachKeyComesByTheBestRoadForIt) {
    offers(best, offerOf({control}, ChordSight::unseen));
    EXPECT_EQ(best.watched(), std::vector({control}));
    EXPECT_EQ(second.watched(), std::vector({shift}));
    hold(best, control, 500);
    hold(second, shift, 100);
    EXPECT_EQ(gestures, QStringList({"began", "ended", "toggle"}));
}

TEST_F(HoldRoadKeyEventsTest, NothingIsWatchedWhileNobodyMonitors) {
    monitor.stop();
    base.clock.settle();
    EXPECT_EQ(best.watched(), std::vector<int>());
    EXPECT_EQ(keys.holdRoad(), &best);
}

TEST_F(HoldRoadKeyEventsTest, MonitoringAnewBreaksNoWatch) {
    EXPECT_EQ(best.watchesBegun, 1);
    start();
    EXPECT_EQ(best.watchesBegun, 1);
}

TEST_F(HoldRoadKeyEventsTest, RoadThatComesLaterIsTaken) {
    offers(best, {});
    EXPECT_EQ(keys.holdRoad(), &second);
    hold(second, control, 500);
    offers(best, offerOf({control, shift}, ChordSight::losesRelease));
    EXPECT_EQ(second.watched(), std::vector<int>());
    hold(best, control, 500);
    EXPECT_EQ(gestures, QStringList({"began", "ended", "began", "ended"}));
}

TEST_F(HoldRoadKeyEventsTest, RoadThatGoesEndsTheHoldAndTheNextOneTakesOver) {
    down(best, control);
    pass(5000);
    offers(best, {});
    EXPECT_EQ(gestures, QStringList({"began", "ended"}));
    hold(second, control, 500);
    EXPECT_EQ(gestures, QStringList({"began", "ended", "began", "ended"}));
}

TEST_F(HoldRoadKeyEventsTest, BetterRoadThatComesEndsTheHoldOnTheOldOne) {
    offers(best, {});
    down(second, control);
    pass(5000);
    offers(best, offerOf({control}, ChordSight::losesRelease));
    EXPECT_EQ(gestures, QStringList({"began", "ended"}));
}

TEST_F(HoldRoadKeyEventsTest, OfferThatChangesInOtherThingsLeavesTheHoldAlone) {
    down(best, control);
    pass(1000);
    HoldOffer offer = best.offer();
    offer.keys.push_back({keyCode::fn, true, ChordSight::dedicated});
    offers(best, offer);
    EXPECT_EQ(gestures, QStringList({"began"}));
    up(best, control);
    EXPECT_EQ(gestures, QStringList({"began", "ended"}));
    EXPECT_EQ(best.watchesBegun, 1);
}

TEST_F(HoldRoadKeyEventsTest, WithoutAnyRoadThereIsSilenceAndItIsSaid) {
    offers(best, {});
    offers(second, {});
    EXPECT_EQ(keys.holdRoad(), nullptr);
    EXPECT_EQ(keys.handsFreeRoad(), nullptr);
}

TEST_F(HoldRoadKeyEventsTest, ChangesOfTheRoadsAreTold) {
    int told = 0;
    const Handle handle = keys.onRoadsChanged([&told] { ++told; });
    offers(best, {});
    EXPECT_EQ(told, 1);
}

TEST_F(HoldRoadKeyEventsTest, OtherHoldKeyIsWatchedAtOnce) {
    base.preferences.set(preference::hotkey, QString(rawName(Hotkey::fn)));
    base.clock.settle();
    EXPECT_EQ(best.watched(), std::vector({shift}));
    EXPECT_EQ(keys.holdRoad(), nullptr);
}

TEST_F(HoldRoadKeyEventsTest, NoHandsFreeKeyIsWatchedWhenNoneIsChosen) {
    base.preferences.set(preference::toggleHotkey, QString(""));
    base.clock.settle();
    EXPECT_EQ(best.watched(), std::vector({control}));
    EXPECT_EQ(keys.handsFreeRoad(), nullptr);
}

TEST_F(HoldRoadKeyEventsTest, HandsFreeKeyOnlyComesByARoadThatTellsTapsFromChords) {
    for (const ChordSight chords : {ChordSight::unseen, ChordSight::endsHold}) {
        offers(best, offerOf({control, shift}, chords));
        EXPECT_EQ(keys.holdRoad(), &best);
        EXPECT_EQ(keys.handsFreeRoad(), &second);
    }
}

TEST_F(HoldRoadKeyEventsTest, RoadThatIsBlindToHoldingIsPassedOverUntilItChanges) {
    offers(best, offerOf({control}, ChordSight::endsHold));
    for (int i = 0; i < 3; ++i) {
        hold(best, control, 0);
    }
    EXPECT_EQ(gestures, QStringList());
    EXPECT_EQ(keys.holdRoad(), &second);
    hold(second, control, 500);
    EXPECT_EQ(gestures, QStringList({"began", "ended"}));
    best.setInForce(control, false);
    base.clock.settle();
    EXPECT_EQ(keys.holdRoad(), &second) << "it offers what it did";
    offers(best, {});
    offers(best, offerOf({control}, ChordSight::endsHold));
    EXPECT_EQ(keys.holdRoad(), &best);
}

TEST_F(HoldRoadKeyEventsTest, KeyIsLoggedOnceItsWatchIsInForce) {
    const QString line = QStringLiteral("[tirra-keys] key 62 comes by third");
    FakeHoldRoad third{base.clock, "third", offerOf({control}, ChordSight::told)};
    third.setInForce(control, false);
    HoldRoadKeyEvents slow(base.foundation, {&third}, [] { return false; });
    const auto lines = [&] { return base.lines.filter(line).size(); };
    const Handle watch = slow.addGlobalMonitor(KeyEventKind::flagsChanged, [](const KeyEvent&) {});
    base.clock.settle();
    EXPECT_EQ(third.watched(), std::vector({control}));
    EXPECT_EQ(lines(), 0) << "the service has not answered";
    third.setInForce(control, true);
    base.clock.settle();
    EXPECT_EQ(lines(), 1);
    offers(third, offerOf({control, shift}, ChordSight::told));
    EXPECT_EQ(lines(), 1);
    third.setInForce(control, false);
    base.clock.settle();
    third.setInForce(control, true);
    base.clock.settle();
    EXPECT_EQ(lines(), 2) << "it was lost in between";
}

TEST_F(HoldRoadKeyEventsTest, EscapeIsWatchedOnlyWhileALocalMonitorWantsKeys) {
    EXPECT_EQ(second.watched(), std::vector<int>());
    QStringList seen;
    std::vector<Handle> monitors;
    monitors.push_back(keys.addLocalMonitor(KeyEventKind::keyDown, [](const KeyEvent&) { return false; }));
    monitors.push_back(keys.addGlobalMonitor(KeyEventKind::keyDown, [&seen](const KeyEvent& event) {
        seen.append(QString::number(event.keyCode));
    }));
    base.clock.settle();
    EXPECT_EQ(second.watched(), std::vector({keyCode::escape}));
    down(second, keyCode::escape);
    up(second, keyCode::escape);
    EXPECT_EQ(seen, QStringList({"53"}));
    monitors.clear();
    base.clock.settle();
    EXPECT_EQ(second.watched(), std::vector<int>());
}

TEST_F(HoldRoadKeyEventsTest, EscapeThatJoinsTheWatchLeavesTheHoldAlone) {
    offers(best, {});
    down(second, control);
    pass(500);
    const Handle escapeWanted =
        keys.addLocalMonitor(KeyEventKind::keyDown, [](const KeyEvent&) { return false; });
    base.clock.settle();
    EXPECT_EQ(second.watched(), std::vector({control, shift, keyCode::escape}));
    pass(500);
    up(second, control);
    EXPECT_EQ(gestures, QStringList({"began", "ended"}));
}

TEST_F(HoldRoadKeyEventsTest, ChordInTheFirstSecondInterruptsWhereOtherKeysAreTold) {
    offers(best, {});
    down(second, control);
    pass(500);
    down(second, 300);
    up(second, control);
    EXPECT_EQ(gestures, QStringList({"began", "interrupted"}));
}

TEST_F(HoldRoadKeyEventsTest, PressAfterAChordWhoseReleaseWasLostIsAHoldOfItsOwn) {
    offers(best, {});
    down(second, control);
    pass(500);
    down(second, 300);
    pass(3000);
    hold(second, control, 500);
    EXPECT_EQ(gestures, QStringList({"began", "interrupted", "began", "ended"}));
}

TEST_F(HoldRoadKeyEventsTest, ChordThatLosesItsReleaseInterruptsWhereTheStateCanBeAsked) {
    best.held = std::set{control};
    down(best, control);
    pass(400);
    best.held = std::set<int>();
    pass(1000);
    EXPECT_EQ(gestures, QStringList({"began", "interrupted"}));
}

TEST_F(HoldRoadKeyEventsTest, HoldEndsWhenBothTwinsAreUp) {
    offers(best, {});
    down(second, keyCode::leftControl);
    down(second, control);
    pass(2000);
    up(second, control);
    EXPECT_EQ(gestures, QStringList({"began"}));
    up(second, keyCode::leftControl);
    EXPECT_EQ(gestures, QStringList({"began", "ended"}));
}

TEST_F(HoldRoadKeyEventsTest, TwinThatIsDownWhenTheRoadGoesLeavesNoHoldOpen) {
    offers(best, {});
    down(second, keyCode::leftControl);
    down(second, control);
    pass(2000);
    up(second, control);
    offers(second, {});
    EXPECT_EQ(gestures, QStringList({"began", "ended"}));
}

TEST_F(HoldRoadKeyEventsTest, EdgesOfARoadThatWasNotChosenCountForNothing) {
    offers(best, offerOf({control}, ChordSight::dedicated));
    hold(second, control, 500); // second is watched for the hands-free key
    EXPECT_EQ(gestures, QStringList());
}

} // namespace

} // namespace lorvane
