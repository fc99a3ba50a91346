// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/Hotkey.h"

#include "input/KeyEvents.h"

#include <QStringList>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace lorvane {

namespace {

TEST(Hotkey, ListsTheFiveKeysInOrder) {
    QStringList names;
    for (const Hotkey hotkey : allHotkeys) {
        names.append(rawName(hotkey));
    }
    EXPECT_EQ(names, (QStringList{"rightCommand", "rightOption", "rightShift", "rightControl", "fn"}));
}

TEST(Hotkey, EachKeyHasItsCodeAndItsMask) {
    const std::vector<std::pair<int, std::uint32_t>> wanted{
        {54, 0x100000}, {61, 0x80000}, {60, 0x20000}, {62, 0x40000}, {63, 0x800000}};
    std::vector<std::pair<int, std::uint32_t>> found;
    for (const Hotkey hotkey : allHotkeys) {
        found.emplace_back(codeOf(hotkey), maskOf(hotkey));
    }
    EXPECT_EQ(found, wanted);
}

TEST(Hotkey, RawNameParsesBackToTheKey) {
    for (const Hotkey hotkey : allHotkeys) {
        EXPECT_EQ(hotkeyFromRawName(rawName(hotkey)), hotkey);
    }
}

TEST(Hotkey, UnknownRawNameParsesToNothing) {
    for (const char* const name : {"", "leftCommand", "RightCommand", "rightCommand ", "Fn"}) {
        EXPECT_EQ(hotkeyFromRawName(name), std::nullopt) << name;
    }
}

TEST(Hotkey, WithoutATableLabelsReadAsTheirDefaults) {
    const Localisation words;
    QStringList labels;
    QStringList shortLabels;
    for (const Hotkey hotkey : allHotkeys) {
        labels.append(label(hotkey, words));
        shortLabels.append(shortLabel(hotkey, words));
    }
    EXPECT_EQ(labels,
              (QStringList{"Hold right ⌘", "Hold right ⌥", "Hold right ⇧", "Hold right ⌃", "Hold fn (🌐)"}));
    EXPECT_EQ(shortLabels, (QStringList{"right ⌘", "right ⌥", "right ⇧", "right ⌃", "fn"}));
}

TEST(Hotkey, LabelsAreLookedUpByTheirSymbolicKey) {
    const auto words = Localisation::fromJson(
        R"({"hotkey.label.rightCommand": "Hold right Super", "hotkey.short.fn": "Menu"})");
    ASSERT_TRUE(words);
    EXPECT_EQ(label(Hotkey::rightCommand, *words), "Hold right Super");
    EXPECT_EQ(shortLabel(Hotkey::fn, *words), "Menu");
    EXPECT_EQ(label(Hotkey::fn, *words), "Hold fn (🌐)");
}

} // namespace

} // namespace lorvane
