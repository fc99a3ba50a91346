// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/HoldRoadKeyEvents.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "input/HotkeyMonitor.h"
#include "input/testing/FakeHoldRoad.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace lorvane {

namespace {

using std::chrono::milliseconds;

constexpr int holdKey = keyCode::rightControl;
constexpr int otherKey = 300;
constexpr Duration slowestAnswer = milliseconds(60);

/// One kind of road, and how bad it is.
struct Kind {
    const char* name;
    ChordSight chords;
    bool canBeAsked = false;
    /// Of 100 releases that this road should tell.
    int lostReleases = 0;
    /// The key repeats while it is held.
    bool repeats = false;
};

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

/// What a road of that kind tells of a keyboard.
class Keyboard {
 public:
    Keyboard(VirtualClock& clock, FakeHoldRoad& road, const Kind& kind, std::mt19937& random)
        : clock_(clock), road_(road), kind_(kind), random_(random) {
        setHeld(false);
    }

    void press() {
        setHeld(true);
        seesKey_ = true;
        road_.tell(holdKey, HoldEdgeKind::down);
    }
    void pressOther() {
        switch (kind_.chords) {
        case ChordSight::told:
            return road_.tell(otherKey, HoldEdgeKind::down);
        case ChordSight::endsHold:
            return loseSight(true);
        case ChordSight::losesRelease:
            return loseSight(false);
        default:
            return;
        }
    }
    void release() {
        setHeld(false);
        loseSight(percent() >= kind_.lostReleases);
    }
    /// Time passes with the key down.
    void keep(Duration time) {
        const Instant end = clock_.now() + time;
        while (kind_.repeats && seesKey_ && clock_.now() + milliseconds(40) < end) {
            clock_.advance(milliseconds(40));
            road_.tell(holdKey, HoldEdgeKind::down);
        }
        clock_.advance(end - clock_.now());
    }

 private:
    void loseSight(bool tell) {
        if (seesKey_ && tell) {
            road_.tell(holdKey, HoldEdgeKind::up);
        }
        seesKey_ = false;
    }
    void setHeld(bool held) {
        if (kind_.canBeAsked) {
            road_.held = held ? std::set{holdKey} : std::set<int>();
        }
    }
    int percent() { return std::uniform_int_distribution(0, 99)(random_); }

    VirtualClock& clock_;
    FakeHoldRoad& road_;
    const Kind& kind_;
    std::mt19937& random_;
    bool seesKey_ = false;
};

/// A take as the gestures make it; open until it was ended or cancelled.
struct Take {
    Instant begun;
    std::optional<Instant> ended;
    bool delivered = false;
};

class ThousandPresses : public ::testing::TestWithParam<Kind> {
 protected:
    void SetUp() override {
        base.preferences.set(preference::hotkey, QString(rawName(Hotkey::rightControl)));
        base.preferences.set(preference::toggleHotkey, QString(""));
        monitor.hotkey = Hotkey::rightControl;
        monitor.toggleHotkey.reset();
        monitor.onHoldBegan = [this] {
            EXPECT_FALSE(isOpen()) << "a second hold began inside the first";
            takes.push_back({base.clock.now(), std::nullopt, false});
        };
        monitor.onHoldEnded = [this](bool wasTap) { end(!wasTap); };
        monitor.onInterrupted = [this] { end(false); };
        monitor.start();
        base.clock.settle();
    }
    void end(bool delivered) {
        ASSERT_TRUE(isOpen());
        takes.back().ended = base.clock.now();
        takes.back().delivered = delivered;
    }
    [[nodiscard]] bool isOpen() const { return !takes.empty() && !takes.back().ended; }
    int between(int least, int most) { return std::uniform_int_distribution(least, most)(random); }
    Duration inPress() { return milliseconds(between(0, 9) == 0 ? between(5000, 30000) : between(20, 4000)); }
    Duration inBetween() { return milliseconds(between(30, 3000)); }

    /// Whether what was spoken from `from` to `to` is in a take that is delivered. A hold that waited for its
    /// threshold, or for an answer after it, begins that much later.
    [[nodiscard]] bool isDelivered(Instant from, Instant to) const {
        const Instant begun = from + HoldPress::chordThreshold + slowestAnswer;
        return std::any_of(takes.begin(), takes.end(), [&](const Take& take) {
            return take.delivered && take.begun <= begun && take.ended >= to;
        });
    }

    const Kind& kind = GetParam();
    TestFoundation base;
    FakeHoldRoad road{base.clock, "road", HoldOffer{{{holdKey, true, kind.chords}}, {}}};
    HoldRoadKeyEvents keys{base.foundation, {&road}, [] { return false; }};
    HotkeyMonitor monitor{keys};
    std::mt19937 random{20260105};
    std::vector<Take> takes;
};

TEST_P(ThousandPresses, LeaveNoHoldOpenAndLoseNoTake) {
    Keyboard keyboard(base.clock, road, kind, random);
    struct Spoken {
        Instant from;
        Instant to;
    };
    std::vector<Spoken> spoken;
    // Where chords lose the release, one that is lost in the first second is taken for a chord's.
    const Duration shortestTake = milliseconds(kind.chords == ChordSight::losesRelease ? 1200 : 600);
    for (int i = 0; i < 1000; ++i) {
        road.answerDelay = milliseconds(kind.canBeAsked ? between(0, 60) : 0);
        const Duration length = inPress();
        const bool chord = between(0, 3) == 0;
        const Instant pressed = base.clock.now();
        keyboard.press();
        if (chord) {
            const Duration first = std::min<Duration>(length / 2, milliseconds(between(10, 900)));
            keyboard.keep(first);
            keyboard.pressOther();
            keyboard.keep(length - first);
        } else {
            keyboard.keep(length);
        }
        keyboard.release();
        if (!chord && length > shortestTake) {
            spoken.push_back({pressed, pressed + length});
        }
        base.clock.advance(inBetween());
    }
    base.clock.advance(HoldPress::limit + seconds(1));

    EXPECT_FALSE(isOpen());
    EXPECT_GT(spoken.size(), 400U);
    int lost = 0;
    for (const Spoken& take : spoken) {
        lost += isDelivered(take.from, take.to) ? 0 : 1;
    }
    EXPECT_EQ(lost, 0) << "of " << spoken.size();
}

/// Where other keys are told, or the state can be asked, a hold ends soon after its key went up.
TEST_P(ThousandPresses, EndSoonAfterTheReleaseWhereThatCanBeKnown) {
    Keyboard keyboard(base.clock, road, kind, random);
    const bool knowable = kind.canBeAsked || kind.lostReleases == 0;
    int open = 0;
    for (int i = 0; i < 1000; ++i) {
        keyboard.press();
        keyboard.keep(inPress());
        if (kind.canBeAsked && between(0, 3) == 0) {
            keyboard.pressOther();
            keyboard.keep(milliseconds(between(20, 500)));
        }
        keyboard.release();
        base.clock.advance(3 * HoldPress::statePeriod);
        open += isOpen() ? 1 : 0;
        base.clock.advance(seconds(1));
    }
    if (knowable) {
        EXPECT_EQ(open, 0);
    } else {
        EXPECT_GT(open, 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Roads, ThousandPresses,
                         ::testing::Values(Kind{"told", ChordSight::told},
                                           Kind{"toldAsked", ChordSight::told, true, 5, true},
                                           Kind{"dedicated", ChordSight::dedicated, false, 0, true},
                                           Kind{"dedicatedLossy", ChordSight::dedicated, false, 5, true},
                                           Kind{"endsHold", ChordSight::endsHold},
                                           Kind{"endsHoldAsked", ChordSight::endsHold, true, 5, true},
                                           Kind{"losesRelease", ChordSight::losesRelease, false, 5},
                                           Kind{"losesReleaseAsked", ChordSight::losesRelease, true, 5},
                                           Kind{"unseen", ChordSight::unseen},
                                           Kind{"unseenAsked", ChordSight::unseen, true, 5},
                                           Kind{"unseenLossy", ChordSight::unseen, false, 5, true}),
                         [](const auto& road) { return std::string(road.param.name); });

} // namespace

} // namespace lorvane
