// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/languages/testing/FakeLocaleNames.h"
#include "ui/menu/MenuContent.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

struct MenuContentTest : public testing::Test {
    std::vector<MenuEntry> entries() const { return menuContent(state, words, names); }
    /// One word an entry: its kind and id, "text: title" for a line of text.
    QStringList outline() const {
        QStringList lines;
        for (const MenuEntry& entry : entries()) {
            switch (entry.kind) {
            case MenuEntry::Kind::divider:
                lines.append("-");
                break;
            case MenuEntry::Kind::text:
                lines.append("text: " + entry.title);
                break;
            default:
                lines.append(entry.id);
            }
        }
        return lines;
    }
    MenuEntry entry(const QString& id) const {
        for (const MenuEntry& found : entries()) {
            if (found.id == id) {
                return found;
            }
        }
        return {};
    }
    static QStringList titles(const MenuEntry& picker) {
        QStringList found;
        for (const MenuChoice& choice : picker.choices) {
            found.append(choice.title);
        }
        return found;
    }
    static QStringList chosen(const MenuEntry& picker) {
        QStringList found;
        for (const MenuChoice& choice : picker.choices) {
            if (choice.isChosen) {
                found.append(choice.value);
            }
        }
        return found;
    }

    MenuState state;
    Localisation words;
    FakeLocaleNames locale;
    LanguageNames names{locale};
    const QStringList always{"open",       "-", "translateTo", "language", "microphone",      "copyLast",
                             "typingTips", "-", "hotkey",      "-",        "checkForUpdates", "sendFeedback",
                             "quit"};
};

TEST_F(MenuContentTest, WhatIsAlwaysThereStandsInItsOrder) { EXPECT_EQ(outline(), always); }

TEST_F(MenuContentTest, AMissingPermissionIsOfferedFirst) {
    state.permissionsGranted = false;
    EXPECT_EQ(outline(), (QStringList{"enableAccessibility", "-"} + always));
}

TEST_F(MenuContentTest, AnUpdateStandsBeforeAMissingPermission) {
    state.permissionsGranted = false;
    state.availableUpdate = "2.1";
    EXPECT_EQ(outline(), (QStringList{"update", "-", "enableAccessibility", "-"} + always));
    EXPECT_EQ(entry(menu::update).title, QStringLiteral("Update to Lorvane 2.1"));
}

TEST_F(MenuContentTest, ATargetLanguageIsSaidRightBeforeTheFirstEntry) {
    locale.names.insert("de", "German");
    state.availableUpdate = "2.1";
    state.translateLang = "de";
    EXPECT_EQ(
        outline(),
        (QStringList{"update", "-", QString::fromUtf8("text: Translating → German (Deutsch)")} + always));
}

TEST_F(MenuContentTest, ATargetIsOffOrAnyLanguageByItsOwnName) {
    const MenuEntry off = entry(menu::translateTo);
    EXPECT_EQ(off.title, QStringLiteral("Translate to"));
    EXPECT_EQ(off.choices.size(), 122U);
    EXPECT_EQ(titles(off).mid(0, 4),
              (QStringList{"Off", "English", QString::fromUtf8("Español"), QString::fromUtf8("中文")}));
    EXPECT_EQ(chosen(off), QStringList{""});
    state.translateLang = "haw";
    EXPECT_EQ(chosen(entry(menu::translateTo)), QStringList{"haw"});
}

TEST_F(MenuContentTest, ThreeLanguagesOfTakesAreOfferedAndAnotherOneIsNone) {
    EXPECT_EQ(titles(entry(menu::language)), (QStringList{"Auto", QString::fromUtf8("Русский"), "English"}));
    EXPECT_EQ(chosen(entry(menu::language)), QStringList{""});
    state.speakLang = "ru";
    EXPECT_EQ(chosen(entry(menu::language)), QStringList{"ru"});
    state.speakLang = "de";
    EXPECT_EQ(chosen(entry(menu::language)), QStringList());
}

TEST_F(MenuContentTest, MicrophonesFollowTheAutomaticChoice) {
    EXPECT_EQ(titles(entry(menu::microphone)), QStringList{"Auto-detect"});
    state.inputs = {{"uid-1", "Built-in", true}, {"uid-2", "Headset"}};
    state.inputUID = "uid-2";
    EXPECT_EQ(titles(entry(menu::microphone)), (QStringList{"Auto-detect", "Built-in", "Headset"}));
    EXPECT_EQ(chosen(entry(menu::microphone)), QStringList{"uid-2"});
}

TEST_F(MenuContentTest, AChosenMicrophoneThatIsUnpluggedLeavesNoneChosen) {
    state.inputUID = "gone";
    EXPECT_EQ(chosen(entry(menu::microphone)), QStringList());
}

TEST_F(MenuContentTest, EveryHotkeyIsOfferedByItsLabel) {
    state.hotkey = Hotkey::rightShift;
    const MenuEntry keys = entry(menu::hotkey);
    EXPECT_EQ(keys.choices.size(), allHotkeys.size());
    EXPECT_EQ(keys.choices.front().title, label(Hotkey::rightCommand, words));
    EXPECT_EQ(chosen(keys), QStringList{"rightShift"});
}

TEST_F(MenuContentTest, TypingTipsAreOnOrOff) {
    EXPECT_TRUE(entry(menu::typingTips).isOn);
    state.nudgesOn = false;
    EXPECT_FALSE(entry(menu::typingTips).isOn);
}

} // namespace

} // namespace lorvane
