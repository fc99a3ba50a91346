// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/test/IbusFixture.h"

#include "support/Corpus.h"
#include "support/DesktopApps.h"
#include "support/FieldReader.h"
#include "support/PhysicalKeyboard.h"

#include <cmath>
#include <iostream>

namespace lorvane {

namespace {

const QString everyScript = QStringLiteral(
    "The Quick (brown) fox, 7 > 3 & \"so\" \\ #1 {a}[b] ~user@host.org; it's 100%! Zażółć gęślą jaźń, ÉTÉ où "
    "ça œuvre — “Straße” ñandú €5… Съешь же ещё этих мягких булок, да выпей чаю. Ξεσκεπάζω τὴν βδελυγμία "
    "今天下午三点开会，请把报告发给我。これは日本語の文章です。👍🏽 "
    "👩‍👩‍👧‍👦 "
    "🏳️‍🌈 "
    "❤️ "
    "ok "
    "😀😀 "
    "👨‍💻 ");

QStringList inFragments(const QString& text) {
    QStringList fragments(QString{});
    for (qsizetype i = 0; i < text.size();) {
        const qsizetype units = text.at(i).isHighSurrogate() ? 2 : 1;
        if (fragments.last().size() + units > 12) {
            fragments.append(QString());
        }
        fragments.last() += text.mid(i, units);
        i += units;
    }
    return fragments;
}

const QString askForPassword =
    QStringLiteral("import gi; gi.require_version('Gtk', '3.0'); from gi.repository import Gtk; window = "
                   "Gtk.Window(title='password');"
                   "window.add(Gtk.Entry(visibility=False, input_purpose=Gtk.InputPurpose.PASSWORD)); "
                   "window.show_all(); Gtk.main()");
constexpr int letterU = 30;
constexpr int digit1 = 10;
constexpr int digit4 = 13;

/// In a session whose shell speaks to the daemon for its applications.
class IbusSession : public IbusFixture {
 protected:
    void SetUp() override {
        ASSERT_TRUE(waitClosely([this] { return poster.isConnected(); }));
        // The shell sets one a moment after it has come up.
        ASSERT_TRUE(waitUntil([this] { return !(users = inForce()).isEmpty(); }));
    }
    static ToolResult ibus(const QStringList& arguments) {
        return runTool(QStringLiteral("ibus"), arguments);
    }
    static QString inForce() { return QString::fromUtf8(ibus({QStringLiteral("engine")}).output.trimmed()); }
    /// What stands in the field without what toolkits add to it.
    static QString read(const FieldReader& reader) {
        QString text = reader.textAgain().value_or(QString());
        text.remove(QChar(0xFEFF));
        return text.endsWith(QChar(u'\n')) ? text.chopped(1) : text;
    }
    /// 2,000 units and more, a fragment at a time, each read back before the next.
    void expectTyped(const DesktopApp& app) {
        // One for all tests: the accessibility library cannot be begun a second time in a process.
        static const FieldReader reader;
        ASSERT_TRUE(reader.focused(app.pid()));
        ASSERT_EQ(canPost(poster), true);
        QString expected;
        QString seen;
        const Instant start = clock.now();
        for (const QString& fragment : inFragments(everyScript.repeated(8))) {
            expected += fragment;
            ASSERT_EQ(post(poster, fragment), PostOutcome::posted);
            if (!waitClosely([&] { return (seen = read(reader)) == expected; })) {
                break;
            }
        }
        const double rate = static_cast<double>(expected.size()) / inSeconds(clock.now() - start);
        EXPECT_EQ(seen.toStdString(), expected.toStdString());
        std::cout << "[ measured ] " << expected.size() << " units, " << std::lround(rate) << " a second\n";
        poster.finish();
        EXPECT_TRUE(waitUntil([this] { return inForce() == users && remembered.isEmpty(); }));
    }

    IbusPoster poster{clock, log, memory()};
    QString users;
};

TEST_F(IbusSession, TypesEveryScriptIntoGtk3) { expectTyped(*DesktopApp::mousepad()); }
TEST_F(IbusSession, TypesEveryScriptIntoGtk4) { expectTyped(*DesktopApp::gnomeTextEditor()); }
TEST_F(IbusSession, TypesEveryScriptIntoChromium) { expectTyped(*DesktopApp::chromium()); }
TEST_F(IbusSession, TypesEveryScriptIntoFirefox) { expectTyped(*DesktopApp::firefox()); }

TEST_F(IbusSession, AModifierThatIsHeldMakesNoDifference) {
    const auto browser = DesktopApp::chromium();
    PhysicalKeyboard hand;
    hand.press(keycode::rightControl);
    EXPECT_EQ(post(poster, QStringLiteral("a漢 b")), PostOutcome::posted);
    EXPECT_EQ(browser->waitForText(QStringLiteral("a漢 b")), QStringLiteral("a漢 b"));
}

TEST_F(IbusSession, NothingIsCommittedIntoAPassword) {
    const auto dialog =
        DesktopApp::command(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-c"), askForPassword});
    EXPECT_EQ(post(poster, QStringLiteral("secret")), PostOutcome::refused);
    EXPECT_EQ(dialog->text(), QString());
}

TEST_F(IbusSession, WhatTheUserIsComposingStays) {
    const auto editor = DesktopApp::gnomeTextEditor();
    PhysicalKeyboard hand;
    ASSERT_EQ(canPost(poster), true);
    // A character by its number: shown as it is composed, until Return.
    hand.command({keycode::leftControl, keycode::leftShift, letterU});
    hand.tap(digit4);
    ASSERT_TRUE(waitUntil([this] { return canPost(poster) == false; }));
    EXPECT_EQ(post(poster, QStringLiteral("ours")), PostOutcome::refused);
    EXPECT_EQ(inForce(), users);
    hand.tap(digit1);
    hand.tap(keycode::enter);
    EXPECT_EQ(editor->waitForText(QStringLiteral("A")), QStringLiteral("A"));
    EXPECT_TRUE(waitUntil([this] { return canPost(poster) == true; }));
}

TEST_F(IbusSession, ADaemonThatIsEndedInTheMiddleIsFollowedByTheNext) {
    const auto editor = DesktopApp::mousepad();
    ASSERT_EQ(post(poster, QStringLiteral("before ")), PostOutcome::posted);
    EXPECT_EQ(editor->waitForText(QStringLiteral("before ")), QStringLiteral("before "));
    ASSERT_EQ(ibus({QStringLiteral("restart")}).status, 0);
    ASSERT_TRUE(waitUntil([this] { return poster.isConnected() && inForce() == users; }));
    EXPECT_TRUE(waitUntil([this] { return remembered.isEmpty(); }));
}

} // namespace

} // namespace lorvane
