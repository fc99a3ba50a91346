// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/GestureKeys.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "input/testing/FakeKeyEvents.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

class GestureKeysTest : public ::testing::Test {
 protected:
    [[nodiscard]] std::optional<QString> storedToggle() const {
        return world.preferences.stored(preference::toggleHotkey);
    }
    TestFoundation world;
    FakeKeyEvents keyboard{world.clock};
};

TEST_F(GestureKeysTest, DefaultsStandWhenNothingWasStored) {
    const GestureKeys keys(world.foundation, keyboard);
    EXPECT_EQ(keys.hotkey(), Hotkey::rightCommand);
    EXPECT_EQ(keys.toggleHotkey(), Hotkey::rightOption);
    EXPECT_EQ(storedToggle(), "rightOption");
    EXPECT_EQ(world.preferences.stored(preference::hotkey), std::nullopt);
}

TEST_F(GestureKeysTest, StoredKeysAreRead) {
    world.preferences.set(preference::hotkey, QString("rightControl"));
    world.preferences.set(preference::toggleHotkey, QString("fn"));
    const GestureKeys keys(world.foundation, keyboard);
    EXPECT_EQ(keys.hotkey(), Hotkey::rightControl);
    EXPECT_EQ(keys.toggleHotkey(), Hotkey::fn);
}

TEST_F(GestureKeysTest, UnknownNamesCountAsTheDefaultAndAsNone) {
    world.preferences.set(preference::hotkey, QString("leftCommand"));
    world.preferences.set(preference::toggleHotkey, QString("leftOption"));
    const GestureKeys keys(world.foundation, keyboard);
    EXPECT_EQ(keys.hotkey(), Hotkey::rightCommand);
    EXPECT_EQ(keys.toggleHotkey(), std::nullopt);
    EXPECT_EQ(storedToggle(), "");
}

TEST_F(GestureKeysTest, EmptyHandsFreeKeyMeansNone) {
    world.preferences.set(preference::toggleHotkey, QString(""));
    const GestureKeys keys(world.foundation, keyboard);
    EXPECT_EQ(keys.toggleHotkey(), std::nullopt);
    EXPECT_EQ(storedToggle(), "");
}

TEST_F(GestureKeysTest, HoldKeyStoredAsTheDefaultHandsFreeKeyUnsetsHandsFree) {
    world.preferences.set(preference::hotkey, QString("rightOption"));
    const GestureKeys keys(world.foundation, keyboard);
    EXPECT_EQ(keys.toggleHotkey(), std::nullopt);
    EXPECT_EQ(storedToggle(), "");
}

TEST_F(GestureKeysTest, HoldKeyTakesTheKeyAwayFromHandsFree) {
    GestureKeys keys(world.foundation, keyboard);
    keys.setHotkey(Hotkey::rightOption);
    EXPECT_EQ(keys.hotkey(), Hotkey::rightOption);
    EXPECT_EQ(keys.toggleHotkey(), std::nullopt);
    EXPECT_EQ(storedToggle(), "");
    EXPECT_EQ(world.preferences.get(preference::hotkey), "rightOption");
}

TEST_F(GestureKeysTest, HandsFreeKeyIsNeverTheHoldKey) {
    GestureKeys keys(world.foundation, keyboard);
    keys.setToggleHotkey(Hotkey::rightCommand);
    EXPECT_EQ(keys.toggleHotkey(), std::nullopt);
    EXPECT_EQ(storedToggle(), "");
}

TEST_F(GestureKeysTest, NewKeysServeAtOnce) {
    GestureKeys keys(world.foundation, keyboard);
    QStringList gestures;
    GestureActions actions;
    actions.holdBegan = [&] { gestures.append("hold"); };
    actions.toggled = [&] { gestures.append("toggle"); };
    keys.wire(actions);
    keys.start();
    keys.setHotkey(Hotkey::rightShift);
    keys.setToggleHotkey(Hotkey::rightControl);
    keyboard.press(Hotkey::rightCommand);
    keyboard.press(Hotkey::rightShift);
    keyboard.press(Hotkey::rightControl);
    keyboard.release(Hotkey::rightControl);
    EXPECT_EQ(gestures, (QStringList{"hold", "toggle"}));
    EXPECT_EQ(storedToggle(), "rightControl");
}

TEST_F(GestureKeysTest, KeysThatAreChangedFromOutsideServeAtOnce) {
    GestureKeys keys(world.foundation, keyboard);
    QStringList gestures;
    GestureActions actions;
    actions.holdBegan = [&] { gestures.append("hold"); };
    actions.toggled = [&] { gestures.append("toggle"); };
    keys.wire(actions);
    keys.start();
    world.preferences.set(preference::hotkey, QString("rightShift"));
    world.preferences.set(preference::toggleHotkey, QString("rightControl"));
    keyboard.press(Hotkey::rightCommand);
    keyboard.press(Hotkey::rightShift);
    keyboard.press(Hotkey::rightControl);
    keyboard.release(Hotkey::rightControl);
    EXPECT_EQ(gestures, (QStringList{"hold", "toggle"}));
    EXPECT_EQ(keys.hotkey(), Hotkey::rightShift);
    EXPECT_EQ(keys.toggleHotkey(), Hotkey::rightControl);
}

TEST_F(GestureKeysTest, NamesFromOutsideThatAreNoneCountAsAtTheStart) {
    const GestureKeys keys(world.foundation, keyboard);
    world.preferences.set(preference::hotkey, QString("rightShift"));
    world.preferences.set(preference::hotkey, QString("leftShift"));
    world.preferences.set(preference::toggleHotkey, QString("leftOption"));
    EXPECT_EQ(keys.hotkey(), Hotkey::rightCommand);
    EXPECT_EQ(keys.toggleHotkey(), std::nullopt);
    EXPECT_EQ(storedToggle(), "");
}

TEST_F(GestureKeysTest, HoldKeyFromOutsideTakesTheKeyAwayFromHandsFree) {
    const GestureKeys keys(world.foundation, keyboard);
    world.preferences.set(preference::hotkey, QString("rightOption"));
    EXPECT_EQ(keys.toggleHotkey(), std::nullopt);
    EXPECT_EQ(storedToggle(), "");
}

TEST_F(GestureKeysTest, OneEditFromOutsideMayExchangeTheKeys) {
    world.preferences.set(preference::hotkey, QString("rightControl"));
    const GestureKeys keys(world.foundation, keyboard);
    world.store.edit(
        {{preference::hotkey.name, "rightOption"}, {preference::toggleHotkey.name, "rightControl"}});
    EXPECT_EQ(keys.hotkey(), Hotkey::rightOption);
    EXPECT_EQ(keys.toggleHotkey(), Hotkey::rightControl);
    EXPECT_EQ(storedToggle(), "rightControl");
}

TEST_F(GestureKeysTest, ChangesArePublished) {
    GestureKeys keys(world.foundation, keyboard);
    std::vector<Hotkey> holds;
    std::vector<std::optional<Hotkey>> toggles;
    const Handle hold = keys.subscribeHotkey([&](const Hotkey& key) { holds.push_back(key); });
    const Handle toggle =
        keys.subscribeToggleHotkey([&](const std::optional<Hotkey>& key) { toggles.push_back(key); });
    keys.setHotkey(Hotkey::rightOption);
    keys.setHotkey(Hotkey::rightOption);
    EXPECT_EQ(holds, std::vector<Hotkey>{Hotkey::rightOption});
    EXPECT_EQ(toggles, std::vector<std::optional<Hotkey>>{std::nullopt});
}

} // namespace

} // namespace lorvane
