// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/test/DesktopFixture.h"

#include <QTimer>

#include <algorithm>
#include <csignal>

namespace lorvane {
namespace {

const QString smileText = QString::fromUtf8("a😀b\n");

/// The programs that stand for their toolkits: the same window, worked by the same orders.
struct Toolkit {
    const char* name;
    const char* program;
    QStringList arguments;
    /// What it counts where it is told a position.
    TextUnit unit;
};

void PrintTo(const Toolkit& toolkit, std::ostream* out) { *out << toolkit.name; }

class EachToolkit : public AtspiDesktopTest, public ::testing::WithParamInterface<Toolkit> {
 protected:
    Program fields{QString::fromUtf8(GetParam().program), GetParam().arguments};

    void place(const QString& text, const char* order) {
        fields.order(QStringLiteral("load ") + fileWith(text));
        fields.order(QString::fromUtf8(order));
    }
    [[nodiscard]] QString caretOrder(int units, int points) const {
        return QStringLiteral("caret %1").arg(GetParam().unit == TextUnit::utf16 ? units : points);
    }
};

TEST_P(EachToolkit, AnEmptyFieldReadsAsEmpty) { EXPECT_TRUE(reads(fields.id(), 0, 0, QString())); }

TEST_P(EachToolkit, PositionsAreUtf16UnitsBehindAnEmoji) {
    place(smileText, caretOrder(4, 3).toUtf8());
    EXPECT_TRUE(reads(fields.id(), 5, 4, QStringLiteral("\n")));
    fields.order(caretOrder(3, 2));
    EXPECT_TRUE(reads(fields.id(), 5, 3, QStringLiteral("b\n")));
    fields.order(caretOrder(5, 4));
    EXPECT_TRUE(reads(fields.id(), 5, 5, QString()));
}

TEST_P(EachToolkit, ASelectionCountsAsACaretAtItsStart) {
    place(QStringLiteral("one two three"), "select 4 7");
    EXPECT_TRUE(reads(fields.id(), 13, 4, QStringLiteral("two three")));
}

TEST_P(EachToolkit, InsertedTextIsSeenAtOnceAndInUnits) {
    place(QString(), "caret 0");
    EXPECT_TRUE(reads(fields.id(), 0, 0, QString()));
    fields.order(QStringLiteral("insert ") + QString::fromUtf8("x😀y"));
    EXPECT_TRUE(reads(fields.id(), 4, 4, QString()));
    fields.order(QStringLiteral("insert ") + QString::fromUtf8("🎉"));
    EXPECT_TRUE(reads(fields.id(), 6, 6, QString()));
    // As many characters as before, of other lengths.
    place(QString::fromUtf8("wxyz"), caretOrder(4, 4).toUtf8());
    EXPECT_TRUE(reads(fields.id(), 4, 4, QString()));
}

TEST_P(EachToolkit, APasswordIsToldAndNotRead) {
    workspace.front = RunningApplication{fields.id(), {}, {}};
    ASSERT_TRUE(reads(fields.id(), 0, 0, QString()));
    EXPECT_FALSE(isSecure());
    if (std::string(GetParam().name) == "Gtk4") {
        // GTK 4.8 gives its passwords the role of any other line: nothing on the bus tells them.
        return;
    }
    fields.order(QStringLiteral("focus 2"));
    EXPECT_TRUE(until([this] { return isSecure(); }));
    const auto password = focusOnceTold(fields.id());
    ASSERT_TRUE(password);
    EXPECT_FALSE(read(*password));
    fields.order(QStringLiteral("focus 1"));
    EXPECT_TRUE(until([this] { return !isSecure(); }));
}

TEST_P(EachToolkit, TheFieldsOfOneWindowAreTold) {
    ASSERT_TRUE(reads(fields.id(), 0, 0, QString()));
    const auto area = focusOnceTold(fields.id());
    ASSERT_TRUE(area);
    fields.order(QStringLiteral("focus 1"));
    EXPECT_TRUE(until([&] {
        const auto line = focus(fields.id());
        return line && !(*line == *area);
    }));
    fields.order(QStringLiteral("focus 0"));
    EXPECT_TRUE(until([&] {
        const auto back = focus(fields.id());
        return back && *back == *area;
    }));
}

TEST_P(EachToolkit, AFieldIsFoundWhoseEventsWereMissed) {
    ASSERT_TRUE(reads(fields.id(), 0, 0, QString()));
    AtspiFieldAccess late{bus, accessibilitySwitch, workspace, clock};
    const auto known = focusOnceTold(fields.id());
    std::optional<FieldElement> found;
    EXPECT_TRUE(until([&] {
        found = finish<std::optional<FieldElement>>(
            [&](TaskScope scope) { return late.focusedElement(fields.id(), scope); });
        return found.has_value();
    }));
    ASSERT_TRUE(found && known);
    EXPECT_EQ(found->identity().toStdString(), known->identity().toStdString());
}

TEST_P(EachToolkit, AProgramThatIsGoneHasNoField) {
    ASSERT_TRUE(reads(fields.id(), 0, 0, QString()));
    const auto element = focusOnceTold(fields.id());
    ASSERT_TRUE(element);
    fields.end();
    EXPECT_TRUE(until([&] { return !read(*element) && !focus(fields.id()); }));
}

TEST_P(EachToolkit, AHungProgramCostsItsBoundOnceAndHoldsUpNobody) {
    ASSERT_TRUE(reads(fields.id(), 0, 0, QString()));
    const auto element = focusOnceTold(fields.id());
    ASSERT_TRUE(element);
    // Uses up what was asked together with the focus.
    ASSERT_TRUE(until([&] { return read(*element).has_value(); }));
    qint64 longestGap = 0;
    QElapsedTimer sinceBeat;
    QTimer beat;
    QObject::connect(&beat, &QTimer::timeout,
                     [&] { longestGap = std::max(longestGap, sinceBeat.restart()); });
    ::kill(static_cast<pid_t>(fields.id()), SIGSTOP);
    sinceBeat.start();
    beat.start(5);
    const Instant before = clock.now();
    EXPECT_FALSE(read(*element));
    const Instant once = clock.now();
    EXPECT_FALSE(read(*element));
    EXPECT_FALSE(focus(fields.id()));
    const Instant thrice = clock.now();
    ::kill(static_cast<pid_t>(fields.id()), SIGCONT);
    EXPECT_LE(inSeconds(once - before), 0.3);
    EXPECT_LE(inSeconds(thrice - once), 0.12) << "it was asked again though it had been silent";
    EXPECT_LE(longestGap, 120) << "the main loop stood still";
    const Instant woken = clock.now();
    EXPECT_TRUE(reads(fields.id(), 0, 0, QString())) << "it woke up and is read again";
    EXPECT_LE(inSeconds(clock.now() - woken), 1.5) << "its answer was not noticed";
}

TEST_P(EachToolkit, ReadingOverAndOverGivesTheSame) {
    place(smileText, caretOrder(4, 3).toUtf8());
    ASSERT_TRUE(reads(fields.id(), 5, 4, QStringLiteral("\n")));
    std::vector<double> costs;
    const auto readOnce = [&] {
        const Instant before = clock.now();
        const auto element = focus(fields.id());
        const auto reading = element ? read(*element) : std::nullopt;
        if (reading) {
            costs.push_back(1000 * inSeconds(clock.now() - before));
            EXPECT_EQ(reading->caret, 4);
        }
        return reading.has_value();
    };
    while (costs.size() < 500) {
        ASSERT_TRUE(until(readOnce)) << "after " << costs.size() << " readings";
    }
    std::sort(costs.begin(), costs.end());
    std::cout << GetParam().name << ": focus and read p50 " << costs[250] << " ms, p95 " << costs[475]
              << " ms\n";
}

TEST_P(EachToolkit, AFieldOfAMillionCharactersIsReadAndStaysCheap) {
    // Long lines, since GTK 4 is deaf for half a minute while it measures forty thousand short ones.
    const QString line = QString::fromUtf8("line of text 😀 with more ").repeated(40) + QLatin1Char('\n');
    const QString text = line.repeated(1'000'000 / line.size() + 1);
    const int units = static_cast<int>(text.size());
    const int points = units - static_cast<int>(surrogatePairs(text));
    place(text, caretOrder(units, points).toUtf8());
    ASSERT_TRUE(reads(fields.id(), units, units, QString()));
    const auto element = focusOnceTold(fields.id());
    ASSERT_TRUE(element);
    std::vector<double> costs;
    ASSERT_TRUE(until([&] {
        const Instant before = clock.now();
        const auto reading = read(*element);
        if (reading) {
            costs.push_back(1000 * inSeconds(clock.now() - before));
            EXPECT_EQ(reading->length, units);
        }
        return costs.size() == 200;
    }));
    std::sort(costs.begin(), costs.end());
    std::cout << GetParam().name << ": read of 1 MB p50 " << costs[100] << " ms, p95 " << costs[190]
              << " ms\n";
    // A generous bound: half of what any wait may take.
    EXPECT_LE(costs[100], 75.0);
    fields.order(QStringLiteral("insert ") + QString::fromUtf8("x😀y"));
    EXPECT_TRUE(reads(fields.id(), units + 4, units + 4, QString()));
}

INSTANTIATE_TEST_SUITE_P(
    Desktop, EachToolkit,
    ::testing::Values(Toolkit{"Gtk3", GTK_FIELDS, {QStringLiteral("3")}, TextUnit::codePoints},
                      Toolkit{"Gtk4", GTK_FIELDS, {QStringLiteral("4")}, TextUnit::codePoints},
                      Toolkit{"Qt6", QT_FIELDS, {}, TextUnit::utf16}),
    [](const auto& toolkit) { return std::string(toolkit.param.name); });

class RealEditors : public AtspiDesktopTest {};

TEST_F(RealEditors, MousepadIsRead) {
    const Program editor(QStringLiteral("mousepad"), {fileWith(smileText)});
    EXPECT_TRUE(reads(editor.id(), 5, 0, smileText));
}

TEST_F(RealEditors, FeatherpadIsRead) {
    const Program editor(QStringLiteral("featherpad"), {fileWith(smileText)});
    EXPECT_TRUE(reads(editor.id(), 5, 0, smileText));
}

TEST_F(RealEditors, TheFocusFollowsTheUserFromApplicationToApplication) {
    Program first(QStringLiteral(QT_FIELDS));
    ASSERT_TRUE(reads(first.id(), 0, 0, QString()));
    Program second(QStringLiteral(GTK_FIELDS), {QStringLiteral("3")});
    ASSERT_TRUE(reads(second.id(), 0, 0, QString()));
    EXPECT_TRUE(until([&] { return !focus(first.id()); })) << "the first still has a focused field";
    Program third(QStringLiteral(GTK_FIELDS), {QStringLiteral("4")});
    ASSERT_TRUE(reads(third.id(), 0, 0, QString()));
    EXPECT_TRUE(until([&] { return !focus(second.id()); })) << "the second still has a focused field";
    third.end();
    ASSERT_TRUE(reads(second.id(), 0, 0, QString()));
    second.end();
    EXPECT_TRUE(reads(first.id(), 0, 0, QString()));
}

TEST_F(RealEditors, TwoProgramsHaveDifferentFields) {
    const Program first(QStringLiteral(QT_FIELDS));
    ASSERT_TRUE(reads(first.id(), 0, 0, QString()));
    const auto one = focusOnceTold(first.id());
    const Program second(QStringLiteral(QT_FIELDS));
    ASSERT_TRUE(reads(second.id(), 0, 0, QString()));
    const auto two = focusOnceTold(second.id());
    ASSERT_TRUE(one && two);
    EXPECT_FALSE(*one == *two);
}

TEST_F(RealEditors, ASecondConnectionComesUpBesideTheFirst) {
    const Instant before = clock.now();
    const AtspiBus second(clock, QDBusConnection::sessionBus());
    const Instant made = clock.now();
    ASSERT_TRUE(until([&] { return second.isConnected(); }));
    std::cout << "connected after " << 1000 * inSeconds(clock.now() - before)
              << " ms, of which the constructor " << 1000 * inSeconds(made - before) << " ms\n";
    EXPECT_TRUE(bus.isConnected());
}

TEST_F(RealEditors, ATerminalCannotBeReadAsAField) {
    const Program terminal(QStringLiteral("xterm"));
    workspace.front = RunningApplication{terminal.id(), {}, {}};
    EXPECT_FALSE(focus(terminal.id()));
    EXPECT_FALSE(isSecure());
}

} // namespace
} // namespace lorvane
