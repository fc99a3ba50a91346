// SPDX-License-Identifier: GPL-3.0-or-later
// The pill of the program itself: a user dictates with real keys and with the mouse, and looks at the screen.
#include "desktop/pill/PillDesk.h"
#include "desktop/program/DictationDesk.h"
#include "support/VirtualMicrophone.h"

namespace lorvane {

namespace {

using std::chrono::milliseconds;

const QString heard = QStringLiteral("Hello from the pill.");
constexpr std::array<int, 3> recording{200, 89, 62};
constexpr std::array<int, 3> green{79, 190, 141};
/// Of the bars at rest, which let a little of the capsule through.
constexpr std::array<int, 3> resting{199, 194, 186};
/// The largest capsule of a take, and the hit area's middle.
constexpr QRect capsule(572, 774, 136, 22);
constexpr QPoint middle(640, 785);

class PillProgram : public DictationDesk {
 protected:
    void SetUp() override { mouse::moveTo({5, 5}); }
    static bool shows(const std::array<int, 3>& colour) {
        return waitUntil([&colour] { return Picture(capsule).hasNear(colour, 14); });
    }
    static bool isAway() {
        return waitUntil([] {
            const Picture seen(capsule);
            return !seen.hasNear(resting, 14) && !seen.hasNear(recording, 14);
        });
    }
};

TEST_F(PillProgram, ShowsEachPhaseOfATake) {
    const auto editor = DesktopApp::mousepad();
    startHearing(heard);
    EXPECT_TRUE(shows(resting));
    hand.press(holdKey);
    EXPECT_TRUE(shows(recording));
    stay(milliseconds(500));
    hand.release(holdKey);
    EXPECT_TRUE(shows(green));
    EXPECT_TRUE(shows(resting));
    EXPECT_EQ(editor->waitForText(heard), heard);
}

TEST_F(PillProgram, ARealVoiceMovesTheWave) {
    startHearing(heard);
    hand.press(holdKey);
    EXPECT_TRUE(shows(recording));
    // A flat line in silence, once the capsule has opened.
    EXPECT_TRUE(waitUntil([] {
        const Picture now(capsule);
        stay(milliseconds(300));
        return Picture(capsule) == now;
    }));
    Playback voice(sound::shortSentence().file, "virtual_speaker");
    const Picture first(capsule);
    QList<Picture> seen{first};
    EXPECT_TRUE(waitUntil([&seen] {
        const Picture now(capsule);
        if (!seen.contains(now)) {
            seen.append(now);
        }
        return seen.size() >= 5;
    }));
    hand.release(holdKey);
}

TEST_F(PillProgram, ATapStartsAHandsFreeTakeAndAnotherEndsIt) {
    const auto editor = DesktopApp::mousepad();
    startHearing(heard);
    EXPECT_TRUE(shows(resting));
    mouse::moveTo(middle);
    mouse::click();
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording")));
    stay(milliseconds(800));
    mouse::click();
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(heard), heard);
}

TEST_F(PillProgram, ATakeIsSeenWhileTheBarIsHiddenAndItGoesAgain) {
    const auto editor = DesktopApp::mousepad();
    startHearing(heard);
    EXPECT_TRUE(shows(resting));
    mouse::moveTo(middle);
    mouse::click(3);
    QRect menu;
    ASSERT_TRUE(waitUntil([&menu] { return !(menu = display::openMenu()).isEmpty(); }));
    mouse::moveTo(menu.topLeft() + QPoint(40, 16));
    mouse::click();
    EXPECT_TRUE(isAway());
    hand.press(holdKey);
    EXPECT_TRUE(shows(recording));
    stay(milliseconds(500));
    hand.release(holdKey);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(isAway());
    EXPECT_EQ(editor->waitForText(heard), heard);
}

} // namespace

} // namespace lorvane
