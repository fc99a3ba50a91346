// SPDX-License-Identifier: GPL-3.0-or-later
// A user writes in a real editor while the pill is pointed at, clicked and opened: the editor keeps the
// focus, its caret and the keys.
#include "desktop/pill/PillDesk.h"
#include "support/DesktopApps.h"
#include "support/PhysicalKeyboard.h"
#include "support/Windows.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

// From the window's corner.
constexpr QPoint middle{220, 75};
constexpr QPoint languageChip{186, 75};
constexpr QPoint translationChip{254, 75};
constexpr QPoint cancelButton{276, 75};
constexpr int backspace = 22;

class PillFocus : public ::testing::Test {
 protected:
    void SetUp() override {
        ASSERT_EQ(editor->waitForText("alpha"), "alpha");
        ASSERT_TRUE(editor->select(3, 3));
        focusBefore = display::focus();
    }
    ~PillFocus() override { mouse::moveTo({5, 5}); }

    void pointAt(QPoint within) { mouse::moveTo(stage.place() + within); }
    /// The focus is where it was, and a key goes to the editor at the caret that was put.
    void expectTheEditorHasEverything() {
        EXPECT_EQ(windows::active().id, editor->window());
        EXPECT_EQ(display::focus(), focusBefore);
        hand.tap(keycode::letterZ);
        EXPECT_EQ(editor->waitForText("alpzha"), "alpzha");
        hand.tap(backspace);
        EXPECT_EQ(editor->waitForText("alpha"), "alpha");
        EXPECT_FALSE(stage.state()["active"].toBool());
    }

    std::unique_ptr<DesktopApp> editor = DesktopApp::mousepad("alpha");
    PillStage stage;
    PhysicalKeyboard hand;
    quint32 focusBefore = 0;
};

TEST_F(PillFocus, ShowingAndChangingTakesNoFocus) {
    for (const char* const line : {"phase recording", "phase processing", "phase done", "notice error Oh no",
                                   "hide", "show", "phase idle"}) {
        stage.tell(line);
        expectTheEditorHasEverything();
    }
}

TEST_F(PillFocus, PointingOpensItAndTakesNoFocus) {
    EXPECT_EQ(stage.waitForWidth(58), 58);
    pointAt(middle);
    EXPECT_EQ(stage.waitForWidth(110), 110);
    expectTheEditorHasEverything();
    mouse::moveTo({5, 5});
    EXPECT_EQ(stage.waitForWidth(58), 58);
}

TEST_F(PillFocus, ATapStartsAndStopsAndTakesNoFocus) {
    pointAt(middle);
    EXPECT_EQ(stage.waitForWidth(110), 110);
    mouse::click();
    EXPECT_TRUE(stage.waitForWord("startDictation"));
    stage.tell("phase recording");
    EXPECT_EQ(stage.waitForWidth(136), 136);
    mouse::click();
    EXPECT_TRUE(stage.waitForWord("stopDictation"));
    expectTheEditorHasEverything();
}

TEST_F(PillFocus, ATapBesideTheCapsuleButInsideTheHitAreaCountsToo) {
    const QJsonObject state = stage.state();
    if (!state["composited"].toBool()) {
        GTEST_LOG_(INFO) << "without a compositor the window is cut out along the capsule";
        EXPECT_TRUE(display::isCutOut(stage.window()));
        return;
    }
    stage.tell("phase done");
    EXPECT_EQ(stage.waitForWidth(96), 96);
    pointAt({155, 64});
    mouse::click();
    EXPECT_TRUE(stage.waitForWord("startDictation"));
    expectTheEditorHasEverything();
}

TEST_F(PillFocus, ATapWhileProcessingDoesNothingAndTheCrossCancels) {
    stage.tell("phase processing");
    EXPECT_EQ(stage.waitForWidth(136), 136);
    pointAt(middle);
    mouse::click();
    pointAt(cancelButton);
    mouse::click();
    EXPECT_TRUE(stage.waitForWord("cancelProcessing"));
    EXPECT_FALSE(stage.hasSaid("startDictation"));
    EXPECT_FALSE(stage.hasSaid("stopDictation"));
    expectTheEditorHasEverything();
}

TEST_F(PillFocus, AnOpenMenuLeavesTheKeysToTheEditorAndClosesAtAClickElsewhere) {
    pointAt(middle);
    EXPECT_EQ(stage.waitForWidth(110), 110);
    pointAt(languageChip);
    mouse::click();
    EXPECT_TRUE(waitUntil([this] { return stage.state()["menus"].toInt() == 1; }));
    expectTheEditorHasEverything();
    mouse::moveTo({5, 5});
    mouse::click();
    EXPECT_TRUE(waitUntil([this] { return stage.state()["menus"].toInt() == 0; }));
    EXPECT_EQ(stage.waitForWidth(58), 58);
    expectTheEditorHasEverything();
}

TEST_F(PillFocus, TheLanguageMenuStoresWhatIsChosen) {
    pointAt(middle);
    EXPECT_EQ(stage.waitForWidth(110), 110);
    pointAt(languageChip);
    mouse::click();
    EXPECT_TRUE(waitUntil([this] { return stage.state()["menus"].toInt() == 1; }));
    pointAt(languageChip - QPoint(0, 50)); // the middle row of three
    mouse::click();
    EXPECT_TRUE(stage.waitForWord("speakLang=ru"));
    expectTheEditorHasEverything();
}

TEST_F(PillFocus, TheTranslationMenuStoresWhatIsChosen) {
    pointAt(middle);
    EXPECT_EQ(stage.waitForWidth(110), 110);
    stage.tell("translate de");
    EXPECT_TRUE(stage.waitForWord("translateLang=de"));
    pointAt(translationChip);
    mouse::click();
    EXPECT_TRUE(waitUntil([this] { return stage.state()["menus"].toInt() == 1; }));
    const QJsonObject menu = stage.state();
    // "Off" stands second, below the title.
    mouse::moveTo({menu["menuX"].toInt() + 40, menu["menuY"].toInt() + 4 + 24 + 12});
    mouse::click();
    EXPECT_TRUE(stage.waitForWord("translateLang="));
    expectTheEditorHasEverything();
}

TEST_F(PillFocus, HidingForAnHourTakesItAwayAtOnceAndATakeBringsItBackMeanwhile) {
    stage.tell("notice warning Oh no");
    EXPECT_EQ(stage.waitForWidth(220), 220);
    const quint32 window = stage.window();
    pointAt(middle);
    mouse::click(3);
    EXPECT_TRUE(waitUntil([this] { return stage.state()["menus"].toInt() == 1; }));
    const QJsonObject menu = stage.state();
    mouse::moveTo({menu["menuX"].toInt() + 40, menu["menuY"].toInt() + 16});
    mouse::click();
    EXPECT_TRUE(stage.waitForWord("hideForAnHour"));
    EXPECT_TRUE(waitUntil([window] { return !display::isShown(window); }));
    stage.tell("phase recording");
    EXPECT_TRUE(waitUntil([window] { return display::isShown(window); }));
    stage.tell("phase idle");
    EXPECT_TRUE(waitUntil([window] { return !display::isShown(window); }));
    expectTheEditorHasEverything();
}

TEST_F(PillFocus, TheProgramMenuWithItsSubmenuTakesNoFocusEither) {
    stage.tell("menu on");
    pointAt(middle);
    mouse::click(3);
    EXPECT_TRUE(waitUntil([this] { return stage.state()["menus"].toInt() == 1; }));
    QJsonObject menu = stage.state();
    mouse::moveTo({menu["menuX"].toInt() + 40, menu["menuY"].toInt() + 16 + 33});
    mouse::click();
    EXPECT_TRUE(waitUntil([this] { return stage.state()["menus"].toInt() == 2; }));
    expectTheEditorHasEverything();
    menu = stage.state();
    mouse::moveTo({menu["menuX"].toInt() + 40, menu["menuY"].toInt() + 16});
    mouse::click();
    EXPECT_TRUE(stage.waitForWord("built-in"));
    EXPECT_TRUE(waitUntil([this] { return stage.state()["menus"].toInt() == 0; }));
    expectTheEditorHasEverything();
}

} // namespace

} // namespace lorvane
