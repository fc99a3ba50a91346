// SPDX-License-Identifier: GPL-3.0-or-later
// The hold key as part of what the user does with the keyboard otherwise.
#include "desktop/program/DictationDesk.h"

namespace lorvane {

namespace {

using std::chrono::milliseconds;
using Chord = DictationDesk;

const QString heard = QStringLiteral("Hello from the session.");
constexpr int letterC = 54;

TEST_F(Chord, TheHoldKeyInACommandStartsNothingAndTheCommandIsObeyed) {
    const auto editor = DesktopApp::mousepad(QStringLiteral("copied by hand"));
    startHearing(heard);
    hand.command({holdKey, keycode::letterA});
    hand.command({holdKey, letterC});
    EXPECT_TRUE(waitUntil([] { return clipboard::read() == "copied by hand"; })) << clipboard::read().data();
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("idle")));
    EXPECT_EQ(takes().size(), 0U);
    // No hold is left open: the next one is as any other.
    program->forgetPhases();
    hand.tap(keycode::end);
    holdFor();
    EXPECT_TRUE(goesThrough(delivered));
    const QString wanted = QStringLiteral("copied by hand") + heard;
    EXPECT_EQ(editor->waitForText(wanted), wanted);
    EXPECT_EQ(takes().size(), 1U);
}

} // namespace

} // namespace lorvane
