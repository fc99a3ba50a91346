// SPDX-License-Identifier: GPL-3.0-or-later
#include "DictationDesk.h"

#include "support/UserSession.h"

namespace lorvane {

namespace {

using std::chrono::milliseconds;

// Scripts of three kinds, an accent as a sign of its own, and a sign outside the first 65536.
const QString manyScripts = QStringLiteral("Grüße, naïve café — Привет, мир! e\u0301 😀🇩🇪");
const QString plain = QStringLiteral("Some plain words.");

// The clipboard is given back this long after the keys, if nobody asks for it late.
constexpr milliseconds untilReturn{1600};

class Insertion : public DictationDesk {
 protected:
    ~Insertion() override {
        if (!session::isWayland()) {
            runTool(QStringLiteral("setxkbmap"),
                    {QStringLiteral("-layout"), QStringLiteral("us"), QStringLiteral("-option"), QString()});
        }
    }

    void dictate() {
        holdFor(milliseconds(600));
        EXPECT_TRUE(goesThrough(delivered));
    }
    /// Whether the program says that the application took the text, which is when the clipboard is given
    /// back.
    ::testing::AssertionResult wasTaken(int times = 1) const {
        const bool good =
            waitUntil([&] { return program->log().count(QStringLiteral("took the text")) == times; });
        return good ? ::testing::AssertionSuccess()
                    : ::testing::AssertionFailure() << "its log:\n"
                                                    << program->log().toStdString();
    }
    static void setLayout(const QStringList& arguments) {
        const ToolResult result = runTool(QStringLiteral("setxkbmap"), arguments);
        ASSERT_EQ(result.status, 0) << result.errors.constData();
    }
};

TEST_F(Insertion, AnEditorOfGtkGetsEveryScriptBesideItsOldText) {
    const auto editor = DesktopApp::mousepad(QStringLiteral("before after"));
    startHearing(manyScripts);
    ASSERT_TRUE(editor->select(7, 7));
    dictate();
    const QString wanted = QStringLiteral("before ") + manyScripts + QStringLiteral("after");
    EXPECT_EQ(editor->waitForText(wanted), wanted);
}

TEST_F(Insertion, AnEditorOfQtGetsEveryScriptBesideItsOldText) {
    const auto editor = DesktopApp::featherpad(QStringLiteral("before after"));
    startHearing(manyScripts);
    ASSERT_TRUE(editor->select(7, 7));
    dictate();
    const QString wanted = QStringLiteral("before ") + manyScripts + QStringLiteral("after");
    EXPECT_EQ(editor->waitForText(wanted), wanted);
}

TEST_F(Insertion, ATerminalGetsTheText) {
    const auto terminal = DesktopApp::xterm();
    startHearing(manyScripts);
    dictate();
    EXPECT_EQ(terminal->waitForText(manyScripts), manyScripts);
}

TEST_F(Insertion, TextOnTheClipboardIsReturned) {
    const clipboard::Copy copy("what the user copied — ранее");
    const auto editor = DesktopApp::mousepad();
    startHearing(plain);
    dictate();
    EXPECT_EQ(editor->waitForText(plain), plain);
    ASSERT_TRUE(wasTaken());
    EXPECT_FALSE(copy.isOwner()) << "the clipboard was not borrowed at all";
    EXPECT_EQ(clipboard::read(), QByteArray("what the user copied — ранее"));
    // For the one who was pasted into as well, which was served something else meanwhile.
    hand.command({keycode::leftControl, keycode::letterV});
    const QString both = plain + QStringLiteral("what the user copied — ранее");
    EXPECT_EQ(editor->waitForText(both), both);
}

TEST_F(Insertion, AnImageOnTheClipboardIsReturnedByteForByte) {
    QByteArray image("\x89PNG\r\n\x1a\n", 8);
    for (int at = 0; at < 300000; ++at) {
        image.append(static_cast<char>((at * 7) ^ (at >> 8)));
    }
    const clipboard::Copy copy(image, QStringLiteral("image/png"));
    const auto editor = DesktopApp::mousepad();
    startHearing(plain);
    dictate();
    EXPECT_EQ(editor->waitForText(plain), plain);
    ASSERT_TRUE(wasTaken());
    EXPECT_FALSE(copy.isOwner()) << "the clipboard was not borrowed at all";
    EXPECT_TRUE(clipboard::read(QStringLiteral("image/png")) == image)
        << clipboard::types().join(QLatin1Char(' ')).toStdString();
    EXPECT_FALSE(clipboard::types().contains(QStringLiteral("UTF8_STRING")));
}

TEST_F(Insertion, WhatTheUserCopiesMeanwhileIsKept) {
    const clipboard::Copy before("old");
    const auto editor = DesktopApp::mousepad();
    startHearing(plain);
    holdFor(milliseconds(600));
    ASSERT_EQ(editor->waitForText(plain), plain);
    const clipboard::Copy own("the user's own");
    EXPECT_FALSE(waitUntil([&] { return !own.isOwner(); }, untilReturn + std::chrono::seconds(1)));
    EXPECT_EQ(clipboard::read(), QByteArray("the user's own"));
}

TEST_F(Insertion, AnApplicationThatHangsFindsTheTextOnTheClipboard) {
    const clipboard::Copy before("old");
    const auto editor = DesktopApp::mousepad();
    startHearing(plain);
    editor->hang();
    holdFor(milliseconds(600));
    EXPECT_TRUE(program->waitForPhase(QStringLiteral("notice")));
    EXPECT_EQ(program->property(QStringLiteral("Notice")), QStringLiteral("Copied — press Ctrl+V"));
    EXPECT_EQ(clipboard::read(), plain.toUtf8());
    editor->wake(); // it now obeys the chord that it slept through
    EXPECT_EQ(editor->waitForText(plain), plain);
}

class PasswordField : public Insertion {
 protected:
    void isRefused(const QString& fields, const QStringList& arguments) {
        const clipboard::Copy copy("old");
        const auto window = DesktopApp::command(fields, arguments);
        window->tell(QStringLiteral("focus 2"));
        ASSERT_TRUE(waitUntil([&] {
            const auto field = window->field();
            return field && field->value(QStringLiteral("password")).toBool();
        }));
        startHearing(plain);
        holdFor(milliseconds(600));
        EXPECT_TRUE(goesThrough({QStringLiteral("recording"), QStringLiteral("processing"),
                                 noticePhase(QStringLiteral("Password field — not inserted")),
                                 QStringLiteral("idle")}));
        EXPECT_TRUE(copy.isOwner());
        EXPECT_EQ(clipboard::read(), QByteArray("old"));
    }
};

TEST_F(PasswordField, OfQtIsRefusedAndTheClipboardUntouched) { isRefused(QStringLiteral(QT_FIELDS), {}); }

TEST_F(PasswordField, OfGtkIsRefusedAndTheClipboardUntouched) {
    isRefused(QStringLiteral(GTK_FIELDS), {QStringLiteral("3")});
}

TEST_F(Insertion, TheSecondGroupOfTwoLayoutsPastesAsWell) {
    setLayout({QStringLiteral("-layout"), QStringLiteral("us,ru"), QStringLiteral("-option"),
               QStringLiteral("grp:caps_toggle")});
    const auto editor = DesktopApp::mousepad();
    startHearing(manyScripts);
    constexpr int capsLock = 66;
    hand.tap(capsLock);
    hand.tap(keycode::letterA);
    ASSERT_EQ(editor->waitForText(QStringLiteral("ф")), QStringLiteral("ф")) << "not the second group";
    dictate();
    EXPECT_EQ(editor->waitForText(QStringLiteral("ф") + manyScripts), QStringLiteral("ф") + manyScripts);
}

TEST_F(Insertion, ALayoutWithoutLatinLettersPastesAsWell) {
    setLayout({QStringLiteral("-layout"), QStringLiteral("ru")});
    const auto editor = DesktopApp::mousepad();
    startHearing(manyScripts);
    hand.tap(keycode::letterA);
    ASSERT_EQ(editor->waitForText(QStringLiteral("ф")), QStringLiteral("ф")) << "not that layout";
    dictate();
    EXPECT_EQ(editor->waitForText(QStringLiteral("ф") + manyScripts), QStringLiteral("ф") + manyScripts);
}

} // namespace

} // namespace lorvane
