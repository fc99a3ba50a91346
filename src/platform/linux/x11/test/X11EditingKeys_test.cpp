// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11EditingKeys.h"

#include "input/KeyEvents.h"
#include "platform/linux/x11/test/TypingFixture.h"

namespace lorvane {

namespace {

constexpr int capsLock = 66;
constexpr int numLock = 77;

class X11EditingKeysTest : public TypingFixture {
 protected:
    /// A key of another program that goes down and stays down, or up.
    void fake(int key, bool press) {
        xcb_test_fake_input(other, press ? XCB_KEY_PRESS : XCB_KEY_RELEASE, static_cast<std::uint8_t>(key),
                            XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
        syncOther();
    }

    X11EditingKeys keys{connection};
};

TEST_F(X11EditingKeysTest, ModifiersThatTheUserHoldsAreTold) {
    EXPECT_EQ(keys.modifierFlags(), 0U);
    const std::pair<int, std::uint32_t> modifiers[]{{keycode::rightControl, modifierFlag::control},
                                                    {keycode::leftControl, modifierFlag::control},
                                                    {keycode::leftShift, modifierFlag::shift},
                                                    {keycode::rightAlt, modifierFlag::option},
                                                    {keycode::rightSuper, modifierFlag::command}};
    std::uint32_t all = 0;
    for (const auto& [key, flag] : modifiers) {
        hand.press(key);
        all |= flag;
        EXPECT_EQ(keys.modifierFlags(), all);
    }
    for (const auto& [key, flag] : modifiers) {
        hand.release(key);
    }
    EXPECT_EQ(keys.modifierFlags(), 0U);
}

TEST_F(X11EditingKeysTest, LocksAndOtherKeysAreNoModifiers) {
    hand.tap(capsLock);
    hand.tap(numLock);
    hand.press(keycode::letterA);
    EXPECT_EQ(keys.modifierFlags(), 0U);
    hand.release(keycode::letterA);
    hand.tap(numLock);
    hand.tap(capsLock);
}

TEST_F(X11EditingKeysTest, SyntheticKeysDoNotCount) {
    fake(keycode::rightControl, true);
    EXPECT_EQ(keys.modifierFlags(), 0U);
    hand.press(keycode::rightShift);
    fake(keycode::rightShift, false);
    EXPECT_EQ(keys.modifierFlags(), modifierFlag::shift);
    fake(keycode::rightControl, false);
}

TEST(X11EditingKeys, WithoutADisplayNothingIsHeldAndNothingPosted) {
    QtClock clock;
    DiagnosticLog log(clock, std::nullopt, [](const QString&) {});
    X11Connection connection(log, ":97531");
    X11EditingKeys keys(connection);
    EXPECT_FALSE(keys.canPost());
    EXPECT_EQ(keys.modifierFlags(), 0U);
    keys.press(EditingKey::rightArrow);
}

TEST_F(X11EditingKeysTest, BackspaceTakesOneCharacterBack) {
    const auto editor = DesktopApp::mousepad("one two");
    hand.chord({keycode::leftControl, 115}); // End
    keys.press(EditingKey::deleteBackward);
    EXPECT_EQ(editor->waitForText("one tw"), "one tw");
}

TEST_F(X11EditingKeysTest, HeldControlDoesNotMakeItTakeAWord) {
    const auto editor = DesktopApp::mousepad("one two");
    hand.chord({keycode::leftControl, 115});
    hand.press(keycode::rightControl);
    hand.press(keycode::leftShift);
    keys.press(EditingKey::deleteBackward);
    keys.press(EditingKey::deleteBackward);
    EXPECT_EQ(editor->waitForText("one t"), "one t");
}

TEST_F(X11EditingKeysTest, RightArrowMovesByOneCharacter) {
    const auto editor = DesktopApp::command(QStringLiteral(QT_FIELDS), {});
    ASSERT_EQ(post(*editor, "one two"), PostOutcome::posted);
    ASSERT_EQ(editor->waitForText("one two"), "one two");
    ASSERT_TRUE(editor->select(1, 1));
    hand.press(keycode::rightControl);
    keys.press(EditingKey::rightArrow);
    keys.press(EditingKey::deleteBackward);
    EXPECT_EQ(editor->waitForText("oe two"), "oe two");
}

TEST_F(X11EditingKeysTest, KeysAreFoundOnAnyLayout) {
    setLayout({"ru", "-option", "caps:backspace"});
    connection.sync();
    const auto editor = DesktopApp::mousepad("x");
    hand.chord({keycode::leftControl, 115});
    keys.press(EditingKey::deleteBackward);
    EXPECT_EQ(editor->waitForText(""), "");
}

} // namespace

} // namespace lorvane
