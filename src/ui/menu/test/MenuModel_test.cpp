// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/DictationWorld.h"
#include "ui/languages/testing/FakeLocaleNames.h"
#include "ui/menu/MenuModel.h"
#include "ui/menu/testing/FakeUpdates.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

struct MenuModelTest : public testing::Test {
    MenuModelTest() {
        subscription = model.subscribe([this] { ++changes; });
    }
    const MenuEntry* entry(const QString& id) const {
        for (const MenuEntry& found : model.entries()) {
            if (found.id == id) {
                return &found;
            }
        }
        return nullptr;
    }
    QString chosen(const QString& id) const {
        for (const MenuChoice& choice : entry(id)->choices) {
            if (choice.isChosen) {
                return choice.value;
            }
        }
        return "nothing";
    }

    DictationWorld world;
    FakeUpdates updates;
    FakeLocaleNames locale;
    LanguageNames names{locale};
    MacAudioDevices devices{world.devices};
    QStringList calls;
    MenuModel model{world.world.foundation,
                    names,
                    {world.controller, devices, updates, [this] { calls.append("settings"); },
                     [this] { calls.append("quit"); }}};
    int changes = 0;
    Handle subscription;
};

TEST_F(MenuModelTest, AMissingPermissionShowsWhileItIsMissing) {
    world.accessibility.setTrusted(false);
    world.controller.recheckPermissions();
    ASSERT_NE(entry(menu::enableAccessibility), nullptr);
    model.activate(menu::enableAccessibility);
    EXPECT_EQ(calls, QStringList{"settings"});
    world.accessibility.setTrusted(true);
    world.controller.recheckPermissions();
    EXPECT_EQ(entry(menu::enableAccessibility), nullptr);
}

TEST_F(MenuModelTest, AFoundUpdateIsTakenThroughTheSameCheckAsTheEntryBelow) {
    EXPECT_EQ(entry(menu::update), nullptr);
    updates.find("3.0");
    ASSERT_NE(entry(menu::update), nullptr);
    model.activate(menu::update);
    model.activate(menu::checkForUpdates);
    EXPECT_EQ(updates.checks, 2);
}

TEST_F(MenuModelTest, PickersWriteThePreferencesAndFollowThem) {
    model.activate(menu::translateTo, "fr");
    model.activate(menu::language, "ru");
    model.activate(menu::microphone, "uid-7");
    EXPECT_EQ(world.preferences.stored(preference::translateLang), "fr");
    EXPECT_EQ(world.preferences.stored(preference::speakLang), "ru");
    EXPECT_EQ(world.preferences.stored(preference::inputUID), "uid-7");
    EXPECT_EQ(chosen(menu::translateTo), "fr");
    EXPECT_EQ(chosen(menu::language), "ru");
    world.preferences.set(preference::speakLang, QStringLiteral("en"));
    EXPECT_EQ(chosen(menu::language), "en");
    model.activate(menu::translateTo, {});
    EXPECT_EQ(world.preferences.stored(preference::translateLang), "");
    EXPECT_EQ(chosen(menu::translateTo), "");
}

TEST_F(MenuModelTest, TheHotkeyIsTheControllers) {
    model.activate(menu::hotkey, "rightShift");
    EXPECT_EQ(world.controller.hotkey(), Hotkey::rightShift);
    EXPECT_EQ(chosen(menu::hotkey), "rightShift");
    world.controller.setHotkey(Hotkey::rightControl);
    EXPECT_EQ(chosen(menu::hotkey), "rightControl");
    model.activate(menu::hotkey, "no such key");
    EXPECT_EQ(world.controller.hotkey(), Hotkey::rightControl);
}

TEST_F(MenuModelTest, TypingTipsTurnOverAtEachClick) {
    model.activate(menu::typingTips);
    EXPECT_FALSE(world.preferences.get(preference::nudges));
    EXPECT_FALSE(entry(menu::typingTips)->isOn);
    model.activate(menu::typingTips);
    EXPECT_TRUE(entry(menu::typingTips)->isOn);
}

TEST_F(MenuModelTest, EntriesOpenTheWindowsAndEndTheProgram) {
    model.activate(menu::open);
    model.activate(menu::sendFeedback);
    model.activate(menu::quit);
    EXPECT_EQ(world.windows.calls, (QStringList{"home", "feedback "}));
    EXPECT_EQ(calls, QStringList{"quit"});
}

TEST_F(MenuModelTest, TheLastTranscriptIsCopiedAndNothingWhenThereIsNone) {
    world.pasteboard.copyElsewhere(QStringLiteral("before"));
    model.activate(menu::copyLast);
    EXPECT_EQ(world.pasteboard.text(), "before");
    world.status.lastText.set("what was said");
    model.activate(menu::copyLast);
    EXPECT_EQ(world.pasteboard.text(), "what was said");
}

TEST_F(MenuModelTest, MicrophonesAreThoseOfNow) {
    EXPECT_EQ(entry(menu::microphone)->choices.size(), 1U);
    world.devices.set({{1, 2, "uid-1", "Headset"}});
    ASSERT_EQ(entry(menu::microphone)->choices.size(), 2U);
    EXPECT_EQ(entry(menu::microphone)->choices.back(), (MenuChoice{"uid-1", "Headset", false}));
    world.devices.set({});
    EXPECT_EQ(entry(menu::microphone)->choices.size(), 1U);
}

TEST_F(MenuModelTest, OnlyAChangeIsTold) {
    world.preferences.set(preference::nudges, true);
    world.preferences.set(preference::soundOn, false);
    EXPECT_EQ(changes, 0);
    world.preferences.set(preference::nudges, false);
    EXPECT_EQ(changes, 1);
}

TEST_F(MenuModelTest, AnEntryThatIsNotThereDoesNothing) {
    model.activate(menu::update);
    model.activate("no such entry");
    EXPECT_EQ(updates.checks, 0);
}

} // namespace

} // namespace lorvane
