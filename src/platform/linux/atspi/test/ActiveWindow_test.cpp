// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/ActiveWindow.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Kind = FocusEvent::Kind;

const AccessibleRef editor{":1.5", "/window/1"};
const AccessibleRef secondOfEditor{":1.5", "/window/2"};
const AccessibleRef browser{":1.7", "/window/1"};

class ActiveWindowTest : public ::testing::Test {
 protected:
    bool tell(Kind kind, const AccessibleRef& source) { return active.handle({kind, source}); }

    ActiveWindow active;
};

TEST_F(ActiveWindowTest, NothingIsInFrontBeforeAnythingWasSaid) { EXPECT_EQ(active.window(), std::nullopt); }

TEST_F(ActiveWindowTest, TheLastThatBecameActiveIsInFront) {
    EXPECT_TRUE(tell(Kind::windowActivated, editor));
    EXPECT_TRUE(tell(Kind::windowActivated, browser));
    EXPECT_EQ(active.window(), browser);
}

TEST_F(ActiveWindowTest, SayingTheSameTwiceChangesNothing) {
    tell(Kind::windowActivated, editor);
    EXPECT_FALSE(tell(Kind::windowActivated, editor));
    EXPECT_EQ(active.window(), editor);
}

TEST_F(ActiveWindowTest, TheLateWordOfTheOldWindowDoesNotClearTheNewOne) {
    tell(Kind::windowActivated, editor);
    tell(Kind::windowActivated, browser);
    EXPECT_FALSE(tell(Kind::windowDeactivated, editor));
    EXPECT_EQ(active.window(), browser);
}

TEST_F(ActiveWindowTest, TheLateWordOfAnotherWindowOfTheSameApplicationDoesNotEither) {
    tell(Kind::windowActivated, editor);
    tell(Kind::windowActivated, secondOfEditor);
    EXPECT_FALSE(tell(Kind::windowDeactivated, editor));
    EXPECT_EQ(active.window(), secondOfEditor);
}

TEST_F(ActiveWindowTest, NothingIsInFrontOnceTheWindowSaysItIsNot) {
    tell(Kind::windowActivated, editor);
    EXPECT_TRUE(tell(Kind::windowDeactivated, editor));
    EXPECT_EQ(active.window(), std::nullopt);
}

TEST_F(ActiveWindowTest, AFieldWithTheFocusDoesNotBringItsWindowToFront) {
    tell(Kind::windowActivated, editor);
    EXPECT_FALSE(tell(Kind::focusGained, browser));
    EXPECT_FALSE(tell(Kind::focusLost, editor));
    EXPECT_EQ(active.window(), editor);
}

TEST_F(ActiveWindowTest, AnApplicationThatLeavesIsNotInFrontAnyMore) {
    tell(Kind::windowActivated, editor);
    EXPECT_FALSE(active.forget(browser.bus));
    EXPECT_TRUE(active.forget(editor.bus));
    EXPECT_EQ(active.window(), std::nullopt);
    EXPECT_TRUE(active.before().isEmpty());
}

TEST_F(ActiveWindowTest, WindowsThatWereInFrontAreRememberedLastFirst) {
    tell(Kind::windowActivated, editor);
    tell(Kind::windowActivated, browser);
    tell(Kind::windowActivated, editor);
    tell(Kind::windowDeactivated, editor);
    EXPECT_EQ(active.before(), (QList<AccessibleRef>{editor, browser}));
}

TEST_F(ActiveWindowTest, OnlyAFewWindowsAreRemembered) {
    for (int i = 0; i < 100; ++i) {
        tell(Kind::windowActivated, {":1.9", QStringLiteral("/window/%1").arg(i)});
    }
    EXPECT_EQ(active.before().size(), 8);
    EXPECT_EQ(active.before().first(), *active.window());
}

} // namespace

} // namespace lorvane
