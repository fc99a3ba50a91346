// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/FieldProbe.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

std::optional<FieldReading> reading(const QString& text, qint64 caret) {
    return FieldReading{text.size(), caret, caret < 0 ? QString() : text.mid(caret)};
}

TEST(FieldProbe, NoReadingGivesNoProbe) { EXPECT_EQ(probeField(std::nullopt), std::nullopt); }

TEST(FieldProbe, EmptyFieldIsBlankAfterTheCaret) {
    EXPECT_EQ(probeField(reading("", 0)), (FieldProbe{0, 0, true}));
}

TEST(FieldProbe, CaretAtTheVeryEndHasBlankAfter) {
    EXPECT_EQ(probeField(reading("some text", 9)), (FieldProbe{9, 9, true}));
}

TEST(FieldProbe, CaretFollowedOnlyByWhitespaceHasBlankAfter) {
    for (const char* const tail : {"\n", " \t\r\n", "\u00A0", "\u2028"}) {
        const QString text = "text" + QString(tail);
        EXPECT_EQ(probeField(reading(text, 4)), (FieldProbe{text.size(), 4, true})) << tail;
    }
}

TEST(FieldProbe, CaretBeforeTextHasNoBlankAfter) {
    EXPECT_EQ(probeField(reading("one two", 3)), (FieldProbe{7, 3, false}));
    EXPECT_EQ(probeField(reading("one\n\n.", 3)), (FieldProbe{6, 3, false}));
}

TEST(FieldProbe, EmojiCountsAsTwoUnits) {
    EXPECT_EQ(probeField(reading("a😀", 3)), (FieldProbe{3, 3, true}));
    EXPECT_EQ(probeField(reading("a😀", 1)), (FieldProbe{3, 1, false}));
}

TEST(FieldProbe, CaretOutsideTheValueGivesNoProbe) {
    EXPECT_EQ(probeField(reading("text", 5)), std::nullopt);
    EXPECT_EQ(probeField(reading("text", -1)), std::nullopt);
    EXPECT_EQ(probeField(FieldReading{0, 1, ""}), std::nullopt);
}

} // namespace

} // namespace lorvane
