// SPDX-License-Identifier: GPL-3.0-or-later
// What holds in every application that can be typed into.
#include "LiveTypingDesk.h"

#include "support/Corpus.h"

namespace lorvane {

namespace {

const QString processing = QStringLiteral("processing");

class InEveryApplication : public LiveTypingDesk, public ::testing::WithParamInterface<Application> {};

TEST_P(InEveryApplication, TheTextStandsThereWhileItStillStreamsAndIsTheFinalText) {
    const clipboard::Copy copy("the user's copy");
    startProgram();
    const auto target = GetParam().open(own);
    LiveStream stream = dictate();
    const QString text = corpus::mixed(300, 5);
    ASSERT_TRUE(isTyped(stream, text, *target)) << program->log().toStdString();
    EXPECT_EQ(program->phase(), processing);
    stream.finish(text);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(logs(
        QStringLiteral("settle: %1 characters typed live and they are the final text").arg(text.size())));
    EXPECT_TRUE(holds(*target, own + text));
    EXPECT_TRUE(copy.isOwner()) << "the clipboard was borrowed";
}

TEST_P(InEveryApplication, AChangedEarlyWordHasTheTypedTextTakenBackAndTheFinalOnePasted) {
    startProgram();
    const auto target = GetParam().open(own);
    LiveStream stream = dictate();
    const QString typed = QStringLiteral("Teh first wörd 😀 is wrong");
    const QString text = QStringLiteral("The first wörd 😀 is right.");
    ASSERT_TRUE(isTyped(stream, typed, *target)) << program->log().toStdString();
    stream.finish(text);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(logs(QStringLiteral("final text differs from the stream — retyping")));
    EXPECT_TRUE(logs(
        QStringLiteral("abandon(not-a-prefix): took back 25 characters, field back to %1").arg(own.size())));
    EXPECT_TRUE(holds(*target, own + text));
}

TEST_P(InEveryApplication, WhatTheFinalTextAddsIsTyped) {
    const clipboard::Copy copy("the user's copy");
    startProgram();
    const auto target = GetParam().open(own);
    LiveStream stream = dictate();
    const QString typed = QStringLiteral("What was heard first");
    ASSERT_TRUE(isTyped(stream, typed, *target)) << program->log().toStdString();
    const QString text = typed + QStringLiteral(", и ещё немного 😀.");
    stream.finish(text);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(holds(*target, own + text));
    EXPECT_TRUE(copy.isOwner()) << "the clipboard was borrowed";
}

// Two suites of one file, since the large applications take their time to start.
#ifdef LARGE_APPLICATIONS
INSTANTIATE_TEST_SUITE_P(, InEveryApplication,
                         ::testing::Values(application::writer, application::chromium, application::firefox),
                         nameOf);
#else
INSTANTIATE_TEST_SUITE_P(, InEveryApplication,
                         ::testing::Values(application::mousepad, application::gnomeTextEditor,
                                           application::featherpad, application::qtFields),
                         nameOf);

class InATerminal : public LiveTypingDesk, public ::testing::WithParamInterface<Application> {};

TEST_P(InATerminal, TheWholeTextIsPastedAtTheEnd) {
    const auto terminal = GetParam().open(QString());
    startProgram();
    LiveStream stream = dictate();
    const QString text = corpus::mixed(200);
    stream.say(corpus::fragments(text));
    stream.finish(text);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(logs(QStringLiteral("the field cannot be read")));
    EXPECT_TRUE(logs(QStringLiteral("settle: nothing was typed live (target gone, typed 0) — pasting")));
    EXPECT_TRUE(holds(*terminal, text));
}

INSTANTIATE_TEST_SUITE_P(
    , InATerminal,
    ::testing::Values(Application{"xterm", [](const QString&) { return DesktopApp::xterm(); }},
                      Application{"xfce4_terminal",
                                  [](const QString&) { return DesktopApp::xfceTerminal(); }}),
    nameOf);
#endif

} // namespace

} // namespace lorvane
