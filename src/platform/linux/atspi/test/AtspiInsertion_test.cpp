// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/test/TypingFixture.h"

#include <csignal>

namespace lorvane {
namespace {

const QString smile = QString::fromUtf8("😀");

/// The programs that stand for their toolkits: the same window, worked by the same orders.
struct Toolkit {
    const char* name;
    const char* program;
    QStringList arguments;
    TextUnit unit;
    /// Units of a field that is large and that the toolkit still answers for within seconds.
    int large;
};

void PrintTo(const Toolkit& toolkit, std::ostream* out) { *out << toolkit.name; }

class Insertion : public AtspiTypingTest, public ::testing::WithParamInterface<Toolkit> {
 protected:
    Program fields{QString::fromUtf8(GetParam().program), GetParam().arguments};

    /// Sets the text area's text and caret and waits until that is read.
    void place(const QString& text, qint64 caret) {
        fields.order(QStringLiteral("load ") + fileWith(text));
        fields.order(QStringLiteral("caret %1").arg(lengthIn(GetParam().unit, text.left(caret))));
        ASSERT_TRUE(reads(fields.id(), text.size(), caret, text.mid(caret)));
    }
    /// What the text area holds from the start: its caret is put there, which keeps the text.
    ::testing::AssertionResult holds(const QString& text) {
        fields.order(QStringLiteral("caret 0"));
        return reads(fields.id(), text.size(), 0, text);
    }
    /// Gives the focus to the line below the text area.
    void useLine() {
        const auto area = focusOnceTold(fields.id());
        fields.order(QStringLiteral("focus 1"));
        ASSERT_TRUE(until([&] {
            const auto line = focus(fields.id());
            return line && area && !(*line == *area);
        }));
    }
};

TEST_P(Insertion, AFragmentStandsWhereTheCaretIsAndTheCaretBehindIt) {
    place(QString::fromUtf8("a😀b\n"), 4);
    EXPECT_TRUE(posts(targetIn(fields.id(), 4), mixedFragment));
    EXPECT_TRUE(reads(fields.id(), 17, 16, QStringLiteral("\n")));
    EXPECT_TRUE(holds(QString::fromUtf8("a😀b") + mixedFragment + QLatin1Char('\n')));
}

TEST_P(Insertion, ACaretThatWasNotTheLastOneReadIsFoundBehindEmoji) {
    place(QString::fromUtf8("😀😀 tail"), 0);
    EXPECT_TRUE(posts(targetIn(fields.id(), 4), QStringLiteral("here")));
    EXPECT_TRUE(holds(QString::fromUtf8("😀😀here tail")));
}

TEST_P(Insertion, ACaretBeyondTheTextIsRefused) {
    place(QStringLiteral("short"), 5);
    EXPECT_EQ(post(targetIn(fields.id(), 6), QStringLiteral("x")), PostOutcome::refused);
    EXPECT_TRUE(holds(QStringLiteral("short")));
}

TEST_P(Insertion, ALineBreakAndATabAreTextOfOneUnitEach) {
    place(QStringLiteral("\n"), 0);
    EXPECT_TRUE(type(fields.id(), {QStringLiteral("a\nb\tc"), smile, QStringLiteral("\n\n")}).landed);
    EXPECT_TRUE(reads(fields.id(), 10, 9, QStringLiteral("\n")));
}

TEST_P(Insertion, ALineTakesFragmentsOneAfterAnother) {
    useLine();
    const PostingTarget target = targetIn(fields.id(), 0);
    EXPECT_TRUE(canPost(target));
    EXPECT_TRUE(type(fields.id(), {smile, QStringLiteral("one "), mixedFragment, smile}).landed);
    EXPECT_TRUE(reads(fields.id(), 20, 20, QString()));
}

TEST_P(Insertion, OnlyATextAreaTakesSeveralLines) {
    EXPECT_TRUE(readOnceTold(fields.id()).multiLine);
    useLine();
    EXPECT_FALSE(readOnceTold(fields.id()).multiLine);
}

TEST_P(Insertion, APasswordIsNotTried) {
    EXPECT_TRUE(canPost(targetIn(fields.id(), 0)));
    if (std::string(GetParam().name) == "Gtk4") {
        // GTK 4.8 gives its passwords the role of any other line: nothing on the bus tells them.
        return;
    }
    workspace.front = RunningApplication{fields.id(), {}, {}};
    fields.order(QStringLiteral("focus 2"));
    ASSERT_TRUE(until([this] { return isSecure(); }));
    EXPECT_FALSE(canPost(targetIn(fields.id(), 0)));
}

TEST_P(Insertion, AProgramThatIsGoneRefuses) {
    const PostingTarget target = targetIn(fields.id(), 0);
    ASSERT_TRUE(canPost(target));
    fields.end();
    EXPECT_FALSE(canPost(target));
    EXPECT_EQ(post(target, QStringLiteral("x")), PostOutcome::refused);
}

TEST_P(Insertion, WhatAHungProgramWasSentIsUnknownAndLandsWhenItWakes) {
    place(QString(), 0);
    const PostingTarget target = targetIn(fields.id(), 0);
    ASSERT_TRUE(canPost(target));
    ::kill(static_cast<pid_t>(fields.id()), SIGSTOP);
    const Instant before = clock.now();
    EXPECT_EQ(post(target, QStringLiteral("late")), PostOutcome::unknown);
    const Instant once = clock.now();
    EXPECT_EQ(post(target, QStringLiteral("never")), PostOutcome::refused) << "it was asked again";
    EXPECT_FALSE(canPost(target));
    const Instant thrice = clock.now();
    ::kill(static_cast<pid_t>(fields.id()), SIGCONT);
    EXPECT_LE(inSeconds(once - before), 0.3);
    EXPECT_LE(inSeconds(thrice - once), 0.1);
    const Instant woken = clock.now();
    EXPECT_TRUE(reads(fields.id(), 4, 4, QString()));
    EXPECT_LE(inSeconds(clock.now() - woken), 1.5) << "it was not asked again when it answered";
    EXPECT_TRUE(holds(QStringLiteral("late")));
}

TEST_P(Insertion, FragmentsLandFasterThanAnyStreamBringsThem) {
    // As in an editor, whose text ends with a line feed.
    place(QStringLiteral("\n"), 0);
    const TypingFigures figures = type(fields.id(), dictation(300));
    ASSERT_TRUE(figures.landed) << figures;
    ASSERT_LT(figures.late, 30);
    figures.print(GetParam().name);
    EXPECT_TRUE(holds(dictation(300).join(QString()) + QLatin1Char('\n')));
    // The bound leaves room for a busy machine; the figure is the printed one.
    EXPECT_GE(static_cast<double>(figures.units) / figures.seconds, 100);
}

TEST_P(Insertion, TypingEmojiIntoALargeFieldFetchesNoText) {
    const QString line = QString::fromUtf8("line of text 😀 with more ").repeated(40) + QLatin1Char('\n');
    const QString text = line.repeated(GetParam().large / line.size() + 1);
    place(text, text.size());
    // The toolkit measures its lines for seconds, and answers late meanwhile.
    ASSERT_TRUE(type(fields.id(), {mixedFragment}).landed);
    int quick = 0;
    ASSERT_TRUE(until([&] {
        const Instant asked = clock.now();
        const bool wasRead = readFocused(fields.id()).has_value();
        quick = wasRead && inSeconds(clock.now() - asked) < 0.02 ? quick + 1 : 0;
        return quick == 100;
    }));
    const int before = access.reader().fetches();
    const TypingFigures figures = type(fields.id(), QStringList(20, mixedFragment));
    ASSERT_TRUE(figures.landed) << figures;
    EXPECT_EQ(access.reader().fetches(), before);
    figures.print(std::string(GetParam().name) + ", large");
}

INSTANTIATE_TEST_SUITE_P(
    Desktop, Insertion,
    ::testing::Values(Toolkit{"Gtk3", GTK_FIELDS, {QStringLiteral("3")}, TextUnit::codePoints, 1'000'000},
                      Toolkit{"Gtk4", GTK_FIELDS, {QStringLiteral("4")}, TextUnit::codePoints, 50'000},
                      Toolkit{"Qt6", QT_FIELDS, {}, TextUnit::utf16, 1'000'000}),
    [](const auto& toolkit) { return std::string(toolkit.param.name); });

} // namespace
} // namespace lorvane
