// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/CharacterKeys.h"

#include "platform/linux/x11/test/Keymaps.h"

#include <xkbcommon/xkbcommon-keysyms.h>

namespace lorvane {

namespace {

constexpr XKeyCode letterQ = 24;
constexpr XKeyCode letterE = 26;
constexpr XKeyCode digitOne = 10;
constexpr XKeyCode graveAccent = 49;
constexpr XKeyCode apostrophe = 48;

CharacterKeys keysOf(const char* layouts, const char* variants = "", xkb_layout_index_t group = 0,
                     const std::bitset<256>& leftOut = {}) {
    const XkbKeymap keymap = keymapOf(layouts, variants);
    return {keymap.get(), group, leftOut};
}

TEST(CharacterKeys, EachPrintableAsciiCharacterIsOnTheAmericanLayout) {
    const CharacterKeys keys = keysOf("us");
    for (char32_t character = U' '; character <= U'~'; ++character) {
        EXPECT_TRUE(keys.find(character)) << static_cast<char>(character);
    }
}

TEST(CharacterKeys, CapitalNeedsShift) {
    const CharacterKeys keys = keysOf("us");
    EXPECT_EQ(keys.find(U'q'), (KeyStroke{letterQ, false, false}));
    EXPECT_EQ(keys.find(U'Q'), (KeyStroke{letterQ, true, false}));
    EXPECT_EQ(keys.find(U'!'), (KeyStroke{digitOne, true, false}));
}

TEST(CharacterKeys, ThirdLevelNeedsAltGr) {
    const CharacterKeys keys = keysOf("de");
    EXPECT_EQ(keys.find(U'@'), (KeyStroke{letterQ, false, true}));
    EXPECT_EQ(keys.find(U'€'), (KeyStroke{letterE, false, true}));
    EXPECT_NE(keys.thirdLevelKey(), 0);
}

TEST(CharacterKeys, FourthLevelNeedsBoth) {
    EXPECT_EQ(keysOf("de").find(U'Ω'), (KeyStroke{letterQ, true, true}));
}

TEST(CharacterKeys, LayoutInForceCounts) {
    EXPECT_EQ(keysOf("us,ru", ",", 1).find(U'й'), (KeyStroke{letterQ, false, false}));
    EXPECT_FALSE(keysOf("us,ru", ",", 1).find(U'q'));
    EXPECT_FALSE(keysOf("us,ru", ",", 0).find(U'й'));
    EXPECT_EQ(keysOf("us", "dvorak").find(U'\''), (KeyStroke{letterQ, false, false}));
}

TEST(CharacterKeys, DeadKeyGivesNoCharacter) {
    const CharacterKeys keys = keysOf("us", "intl");
    EXPECT_EQ(keys.find(U'`'), (KeyStroke{graveAccent, false, true}));
    EXPECT_EQ(keys.find(U'"'), (KeyStroke{apostrophe, true, true}));
    EXPECT_EQ(keys.find(U'\''), (KeyStroke{apostrophe, false, true}));
}

TEST(CharacterKeys, ControlCharactersHaveNoKey) {
    const CharacterKeys keys = keysOf("us");
    for (const char32_t character : {U'\n', U'\t', U'\r', U'\b', U'\x1b', U'\x7f'}) {
        EXPECT_FALSE(keys.find(character)) << static_cast<int>(character);
    }
}

TEST(CharacterKeys, KeypadIsLeftAlone) {
    constexpr XKeyCode keypadFirst = 77;
    constexpr XKeyCode keypadLast = 91;
    const CharacterKeys keys = keysOf("fr");
    for (char32_t digit = U'0'; digit <= U'9'; ++digit) {
        const auto stroke = keys.find(digit);
        ASSERT_TRUE(stroke);
        EXPECT_TRUE(stroke->key < keypadFirst || stroke->key > keypadLast);
    }
}

TEST(CharacterKeys, OrdinaryKeyGoesBeforeARareDouble) {
    constexpr XKeyCode digitNine = 18; // the map has a key for '(' alone too
    EXPECT_EQ(keysOf("us").find(U'('), (KeyStroke{digitNine, true, false}));
}

TEST(CharacterKeys, KeysLeftOutAreNotUsed) {
    std::bitset<256> leftOut;
    leftOut.set(letterQ);
    EXPECT_FALSE(keysOf("us", "", 0, leftOut).find(U'q'));
}

TEST(CharacterKeys, EachCharacterOfTextHasASymbol) {
    EXPECT_EQ(symbolOfCharacter(U'a'), xkb_keysym_t{XKB_KEY_a});
    EXPECT_EQ(symbolOfCharacter(U'é'), xkb_keysym_t{XKB_KEY_eacute});
    for (const char32_t character : {U'ж', U'語', U'😀', U'\u200D', U'\uFE0F', U'—'}) {
        EXPECT_EQ(xkb_keysym_to_utf32(symbolOfCharacter(character)), character);
    }
}

TEST(CharacterKeys, NoCharacterOfTextHasNoSymbol) {
    for (const char32_t character : {U'\n', U'\t', char32_t{0x85}, char32_t{0xD800}, char32_t{0x110000}}) {
        EXPECT_EQ(symbolOfCharacter(character), xkb_keysym_t{XKB_KEY_NoSymbol});
    }
}

} // namespace

} // namespace lorvane
