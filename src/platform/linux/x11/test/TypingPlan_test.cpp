// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/TypingPlan.h"

#include "platform/linux/x11/test/Keymaps.h"

namespace lorvane {

namespace {

constexpr XKeyCode letterA = 38;

class TypingPlanTest : public ::testing::Test {
 protected:
    void lend(std::initializer_list<XKeyCode> codes) {
        std::vector<KeyChange> keys;
        for (const XKeyCode code : codes) {
            keys.push_back({code, XKB_KEY_NoSymbol});
        }
        spare = SpareKeys(keys);
    }
    TypingRound plan(std::u32string_view text) { return planRound(text, layout, spare, down); }
    /// As the executor does it.
    TypingRound carryOut(std::u32string_view text) {
        TypingRound round = plan(text);
        spare.apply(round.changes);
        for (const KeyStroke& stroke : round.strokes) {
            spare.use(stroke.key);
        }
        return round;
    }

    XkbKeymap keymap = keymapOf("us");
    CharacterKeys layout{keymap.get(), 0, {}};
    SpareKeys spare;
    SpareKeys::Keys down;
};

TEST_F(TypingPlanTest, LayoutNeedsNoChange) {
    const TypingRound round = plan(U"aA");
    EXPECT_TRUE(round.changes.empty());
    EXPECT_EQ(round.strokes, (std::vector<KeyStroke>{{letterA, false, false}, {letterA, true, false}}));
}

TEST_F(TypingPlanTest, CharactersThatTheLayoutLacksGetSpareKeys) {
    lend({200, 201, 202});
    const TypingRound round = plan(U"aжé");
    EXPECT_EQ(round.changes,
              (std::vector<KeyChange>{{200, symbolOfCharacter(U'ж')}, {201, symbolOfCharacter(U'é')}}));
    EXPECT_EQ(round.strokes,
              (std::vector<KeyStroke>{{letterA, false, false}, {200, false, false}, {201, false, false}}));
}

TEST_F(TypingPlanTest, CharacterThatComesAgainNeedsOneKey) {
    lend({200, 201});
    const TypingRound round = plan(U"жж");
    EXPECT_EQ(round.changes.size(), 1U);
    EXPECT_EQ(round.strokes.at(0), round.strokes.at(1));
}

TEST_F(TypingPlanTest, BorrowedKeyServesTheNextFragmentToo) {
    lend({200, 201});
    carryOut(U"ж");
    EXPECT_TRUE(plan(U"ж").changes.empty());
}

TEST_F(TypingPlanTest, KeyThatTheFragmentNeedsIsNotGivenToAnotherCharacter) {
    lend({200, 201});
    carryOut(U"жю");
    const TypingRound round = plan(U"яж"); // ж was used the longest time ago
    EXPECT_EQ(round.changes, (std::vector<KeyChange>{{201, symbolOfCharacter(U'я')}}));
    EXPECT_EQ(round.strokes, (std::vector<KeyStroke>{{201, false, false}, {200, false, false}}));
}

TEST_F(TypingPlanTest, MoreCharactersThanKeysTakeSeveralRounds) {
    lend({200, 201});
    EXPECT_EQ(carryOut(U"абaвг").strokes.size(), 3U);
    EXPECT_EQ(carryOut(U"вг").strokes.size(), 2U);
    lend({200});
    EXPECT_EQ(carryOut(U"абв").strokes.size(), 1U);
}

TEST_F(TypingPlanTest, HeldKeyIsNotChanged) {
    lend({200, 201});
    down.set(200);
    EXPECT_EQ(plan(U"жю").changes, (std::vector<KeyChange>{{201, symbolOfCharacter(U'ж')}}));
}

TEST_F(TypingPlanTest, RoundThatWasChangedForIsPlannedAgainWithoutChanges) {
    lend({200, 201, 202});
    const TypingRound first = plan(U"абвг");
    spare.apply(first.changes);
    const TypingRound second = plan(U"абвг");
    EXPECT_TRUE(second.changes.empty());
    EXPECT_EQ(second.strokes, first.strokes);
}

TEST_F(TypingPlanTest, WithoutSpareKeysOnlyTheLayoutCanBeTyped) {
    EXPECT_TRUE(canType(U"abc", layout, spare, down));
    EXPECT_FALSE(canType(U"abж", layout, spare, down));
    lend({200});
    EXPECT_TRUE(canType(U"abж", layout, spare, down));
    down.set(200);
    EXPECT_FALSE(canType(U"abж", layout, spare, down));
}

TEST(TypingPlan, WholeCharactersOfTextAreTypeable) {
    EXPECT_EQ(typeable(QStringLiteral("aж語😀")), U"aж語😀");
    EXPECT_EQ(typeable(QStringLiteral("\u200D\uFE0F")), U"\u200D\uFE0F");
}

TEST(TypingPlan, ControlCharactersAndHalvesAreNot) {
    EXPECT_FALSE(typeable(QStringLiteral("a\nb")));
    EXPECT_FALSE(typeable(QStringLiteral("\t")));
    EXPECT_FALSE(typeable(QString(QChar(0xD83D))));
    EXPECT_FALSE(typeable(QString(QChar(0xDE00)) + QChar(u'a')));
}

} // namespace

} // namespace lorvane
