// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/BorrowedKeys.h"

#include "platform/linux/x11/TypingLayout.h"
#include "platform/linux/x11/X11Properties.h"
#include "platform/linux/x11/test/TypingFixture.h"

#include <QProcess>

#include <xkbcommon/xkbcommon-keysyms.h>

namespace lorvane {

namespace {

class BorrowedKeysTest : public TypingFixture {
 protected:
    QByteArray note() { return windowProperty(connection, connection.root(), "_LORVANE_BORROWED_KEYS"); }
    /// Another run of the program borrows keys and is killed.
    void crash() {
        QProcess program;
        program.start(QStringLiteral(BORROW_KEYS), {QStringLiteral("жя語")});
        QByteArray said;
        ASSERT_TRUE(waitUntil([&] { return (said += program.readAll()).contains("borrowed"); }));
        program.kill();
        ASSERT_TRUE(program.waitForFinished());
        ASSERT_EQ(program.exitStatus(), QProcess::CrashExit);
    }
    /// Another program's change.
    void set(XKeyCode key, xcb_keysym_t symbol) {
        xcb_change_keyboard_mapping(other, 1, key, 1, &symbol);
        syncOther();
    }
    std::vector<XKeyCode> spareCodes() {
        BorrowedKeys keys(connection);
        keys.survey();
        std::vector<XKeyCode> codes;
        for (std::size_t code = 0; code < 256; ++code) {
            if (keys.keys().all()[code]) {
                codes.push_back(static_cast<XKeyCode>(code));
            }
        }
        return codes;
    }
};

TEST_F(BorrowedKeysTest, WhatACrashLeftIsPutBackAtTheNextStart) {
    const QByteArray before = mapOfAllKeys();
    crash();
    EXPECT_NE(mapOfAllKeys(), before);
    EXPECT_FALSE(note().isEmpty());
    const BorrowedKeys next(connection);
    connection.sync();
    EXPECT_EQ(mapOfAllKeys(), before);
    EXPECT_TRUE(note().isEmpty());
}

TEST_F(BorrowedKeysTest, KeyThatHasAnotherSymbolByNowIsLeftAlone) {
    crash();
    const auto taken =
        static_cast<XKeyCode>(windowNumbers(connection, connection.root(), "_LORVANE_BORROWED_KEYS").at(0));
    set(taken, XKB_KEY_ellipsis);
    const auto noted = windowNumbers(connection, connection.root(), "_LORVANE_BORROWED_KEYS");
    ASSERT_EQ(noted.size(), 6U);
    const BorrowedKeys next(connection);
    EXPECT_EQ(symbolOn(taken), xcb_keysym_t{XKB_KEY_ellipsis});
    EXPECT_EQ(symbolOn(static_cast<XKeyCode>(noted.at(2))), xcb_keysym_t{XKB_KEY_NoSymbol});
    EXPECT_EQ(symbolOn(static_cast<XKeyCode>(noted.at(4))), xcb_keysym_t{XKB_KEY_NoSymbol});
    set(taken, XKB_KEY_NoSymbol);
}

TEST_F(BorrowedKeysTest, KeyThatAnotherProgramChangesMeanwhileIsLeftToIt) {
    const auto codes = spareCodes();
    BorrowedKeys keys(connection);
    keys.survey();
    keys.change({{codes.at(0), symbolOfCharacter(U'ж')}, {codes.at(1), symbolOfCharacter(U'я')}});
    ASSERT_EQ(symbolOn(codes.at(1)), symbolOfCharacter(U'я'));
    set(codes.at(0), XKB_KEY_ellipsis);
    keys.giveBack();
    EXPECT_EQ(symbolOn(codes.at(0)), xcb_keysym_t{XKB_KEY_ellipsis});
    EXPECT_EQ(symbolOn(codes.at(1)), xcb_keysym_t{XKB_KEY_NoSymbol});
    set(codes.at(0), XKB_KEY_NoSymbol);
}

TEST_F(BorrowedKeysTest, KeyOfAShortcutStaysUntilItIsLetGo) {
    const auto codes = spareCodes();
    const QByteArray before = mapOfAllKeys();
    BorrowedKeys keys(connection);
    keys.survey();
    keys.change({{codes.at(1), symbolOfCharacter(U'я')}});
    keys.lendForShortcut({codes.at(0), XKB_KEY_v});
    keys.giveBack();
    EXPECT_EQ(symbolOn(codes.at(0)), xcb_keysym_t{XKB_KEY_v});
    EXPECT_EQ(symbolOn(codes.at(1)), xcb_keysym_t{XKB_KEY_NoSymbol});
    EXPECT_EQ(windowNumbers(connection, connection.root(), "_LORVANE_BORROWED_KEYS"),
              (std::vector<std::uint32_t>{codes.at(0), XKB_KEY_v}));
    keys.letGo(codes.at(0));
    EXPECT_EQ(mapOfAllKeys(), before);
    EXPECT_TRUE(note().isEmpty());
}

TEST_F(BorrowedKeysTest, MapIsReadAnewForAnotherLayoutAndNotForBorrowedKeys) {
    ASSERT_TRUE(layout.refresh());
    connection.sync();
    ASSERT_TRUE(layout.refresh());
    const int edition = layout.keyboard().edition();
    const auto codes = spareCodes();
    layout.borrowed().change(
        {{codes.at(0), symbolOfCharacter(U'ж')}, {codes.at(1), symbolOfCharacter(U'я')}});
    connection.sync();
    ASSERT_EQ(symbolOn(codes.at(1)), symbolOfCharacter(U'я'));
    ASSERT_TRUE(layout.refresh());
    EXPECT_EQ(layout.keyboard().edition(), edition);
    EXPECT_FALSE(layout.characters(0).find(U'ж'));
    setLayout({"ru"});
    connection.sync();
    ASSERT_TRUE(layout.refresh());
    EXPECT_GT(layout.keyboard().edition(), edition);
    EXPECT_TRUE(layout.characters(0).find(U'ж'));
}

TEST_F(BorrowedKeysTest, FewSpareKeysTakeSeveralRounds) {
    const auto codes = spareCodes();
    ASSERT_GT(codes.size(), 3U);
    for (std::size_t i = 3; i < codes.size(); ++i) {
        set(codes[i], XKB_KEY_ellipsis);
    }
    connection.sync();
    const auto editor = DesktopApp::mousepad();
    expectTyped(*editor, QStringLiteral("съешь же ещё этих мягких, 日本語も"));
    for (std::size_t i = 3; i < codes.size(); ++i) {
        set(codes[i], XKB_KEY_NoSymbol);
    }
}

TEST_F(BorrowedKeysTest, WithoutSpareKeysTheLayoutIsTypedAndTheRestRefused) {
    const auto codes = spareCodes();
    for (const XKeyCode code : codes) {
        set(code, XKB_KEY_ellipsis);
    }
    connection.sync();
    const auto editor = DesktopApp::mousepad();
    EXPECT_EQ(post(*editor, "no ж"), PostOutcome::refused);
    EXPECT_EQ(post(*editor, "yes"), PostOutcome::posted);
    EXPECT_EQ(editor->waitForText("yes"), "yes");
    for (const XKeyCode code : codes) {
        set(code, XKB_KEY_NoSymbol);
    }
}

} // namespace

} // namespace lorvane
