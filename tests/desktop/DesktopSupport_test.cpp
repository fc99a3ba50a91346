// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Corpus.h"
#include "support/DesktopApps.h"
#include "support/PhysicalKeyboard.h"
#include "support/ProcessTree.h"
#include "support/VirtualMicrophone.h"
#include "support/Windows.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <map>

#include <unistd.h>

#include <gtest/gtest.h>

namespace lorvane {

namespace {

TEST(DesktopApp, EditorsAreReadBackAsTheyStand) {
    const auto text = QStringLiteral("Zwölf — двенадцать 😀\nsecond line");
    EXPECT_EQ(DesktopApp::mousepad(text)->text(), text);
    EXPECT_EQ(DesktopApp::featherpad(text)->text(), text);
    EXPECT_EQ(DesktopApp::mousepad()->text(), QString());
}

TEST(DesktopApp, EveryApplicationHoldsItsTextTakesKeysAndIsEmptied) {
    const auto text = QStringLiteral("Zwölf <b> — двенадцать 😀 & 十二");
    const auto area = WebPage::Kind::area;
    const auto keep = [](auto open) {
        return std::function<std::unique_ptr<DesktopApp>(const QString&)>(open);
    };
    const std::map<const char*, std::function<std::unique_ptr<DesktopApp>(const QString&)>> all{
        {"mousepad", keep(DesktopApp::mousepad)},
        {"gnome-text-editor", keep(DesktopApp::gnomeTextEditor)},
        {"featherpad", keep(DesktopApp::featherpad)},
        {"writer", keep(DesktopApp::writer)},
        {"chromium", [&](const QString& given) { return DesktopApp::chromium(given, area); }},
        {"firefox", [&](const QString& given) { return DesktopApp::firefox(given, area); }},
    };
    PhysicalKeyboard keyboard;
    for (const auto& [name, open] : all) {
        SCOPED_TRACE(name);
        const auto application = open(text);
        EXPECT_EQ(application->waitForText(text), text);
        keyboard.chord({keycode::leftControl, keycode::end});
        keyboard.tap(keycode::letterQ);
        EXPECT_EQ(application->waitForText(text + QChar(u'q')), text + QChar(u'q'));
        application->empty();
        keyboard.tap(keycode::letterA);
        // An office suite begins a sentence with a capital.
        const auto isOne = [](const QString& seen) { return seen.toLower() == QStringLiteral("a"); };
        EXPECT_TRUE(isOne(application->waitForText(isOne)));
    }
}

TEST(DesktopApp, NothingIsLeftOfOneThatHasGone) {
    for (const auto open : {+[] { return DesktopApp::chromium(); }, +[] { return DesktopApp::firefox(); },
                            +[] { return DesktopApp::writer(); }}) {
        auto application = open();
        const qint64 pid = application->pid();
        const auto all = processes::family(static_cast<qint64>(::getpid()));
        ASSERT_TRUE(all.contains(pid));
        application.reset();
        for (const qint64 one : all)
            EXPECT_EQ(processes::isRunning(one), one == static_cast<qint64>(::getpid())) << one;
    }
}

TEST(DesktopApp, APageWithALineTellsThatReturnSendsIt) {
    const auto browser = DesktopApp::chromium(QStringLiteral("text"), WebPage::Kind::line);
    EXPECT_EQ(browser->page().sent(), 0);
    PhysicalKeyboard().tap(keycode::enter);
    EXPECT_TRUE(waitUntil([&] { return browser->page().sent() == 1; }));
    EXPECT_EQ(browser->text(), QStringLiteral("text"));
}

TEST(DesktopApp, TerminalsKeepWhatTheyAreSent) {
    for (const auto open : {DesktopApp::xterm, DesktopApp::xfceTerminal}) {
        const auto terminal = open();
        PhysicalKeyboard().tap(keycode::letterA);
        EXPECT_EQ(terminal->waitForText(QStringLiteral("a")), QStringLiteral("a"));
        terminal->empty();
        PhysicalKeyboard().tap(keycode::letterQ);
        EXPECT_EQ(terminal->waitForText(QStringLiteral("q")), QStringLiteral("q"));
    }
}

TEST(Corpus, HasTheLengthAskedAndIsTheSameAgain) {
    const auto text = corpus::mixed(2000);
    EXPECT_EQ(text.toUcs4().size(), 2000);
    EXPECT_EQ(text, corpus::mixed(2000));
    EXPECT_NE(text, corpus::mixed(2000, 2));
    for (const char32_t wanted :
         {U'\u00FC', U'\u0301', U'\u0416', U'\u03B3', U'\u4ECA', U'\u306E', U'\u200D', U'\U0001F600'})
        EXPECT_TRUE(
            text.toLower().toUcs4().contains(static_cast<uint>(QChar::toLower(static_cast<uint>(wanted)))))
            << static_cast<uint>(wanted);
    EXPECT_EQ(text, text.trimmed());
}

TEST(Corpus, ItsFragmentsAreTheTextAndWholeCharacters) {
    const auto text = corpus::mixed(2000);
    const auto pieces = corpus::fragments(text);
    EXPECT_EQ(pieces.join(QString()), text);
    for (const auto& piece : pieces) {
        EXPECT_FALSE(piece.front().isLowSurrogate());
        EXPECT_LE(piece.size(), 21);
    }
}

TEST(Corpus, WrongCharactersAreCountedAsEdits) {
    const auto text = corpus::mixed(300);
    EXPECT_EQ(corpus::wrongCharacters(text, text), 0);
    EXPECT_EQ(corpus::wrongCharacters(text.mid(3), text), 3);
    EXPECT_EQ(corpus::wrongCharacters(QStringLiteral("a😀c"), QStringLiteral("abc")), 1);
    EXPECT_EQ(corpus::wrongCharacters(QString(), QStringLiteral("😀b")), 2);
}

TEST(DesktopApp, FocusMovesBetweenTwo) {
    const auto first = DesktopApp::mousepad();
    const auto second = DesktopApp::featherpad();
    EXPECT_EQ(windows::active().id, second->window());
    first->focus();
    PhysicalKeyboard().tap(keycode::letterA);
    EXPECT_EQ(first->waitForText(QStringLiteral("a")), QStringLiteral("a"));
    EXPECT_EQ(second->text(), QString());
}

TEST(DesktopApp, TheCaretGoesWhereItIsPut) {
    const auto editor = DesktopApp::mousepad(QStringLiteral("one three"));
    ASSERT_TRUE(editor->select(4, 9));
    PhysicalKeyboard().tap(keycode::letterA);
    EXPECT_EQ(editor->waitForText(QStringLiteral("one a")), QStringLiteral("one a"));
}

TEST(DesktopApp, AHungProgramShowsNothingUntilItWakes) {
    const auto editor = DesktopApp::mousepad(QStringLiteral("text"));
    editor->hang();
    EXPECT_FALSE(editor->field());
    editor->wake();
    EXPECT_TRUE(waitUntil([&] { return editor->field().has_value(); }));
}

TEST(PhysicalKeyboard, TypesIntoATerminal) {
    const auto terminal = DesktopApp::xterm();
    PhysicalKeyboard keyboard;
    keyboard.tap(keycode::letterA);
    keyboard.chord({keycode::leftShift, keycode::letterQ});
    EXPECT_EQ(terminal->waitForText(QStringLiteral("aQ")), QStringLiteral("aQ"));
}

TEST(PhysicalKeyboard, TypesIntoAnEditorThatHasJustComeUp) {
    PhysicalKeyboard keyboard;
    for (const auto& open : {DesktopApp::mousepad, DesktopApp::featherpad}) {
        const auto editor = open(QString());
        keyboard.tap(keycode::letterA);
        keyboard.chord({keycode::leftShift, keycode::letterQ});
        EXPECT_EQ(editor->waitForText(QStringLiteral("aQ")), QStringLiteral("aQ"));
    }
}

TEST(PhysicalKeyboard, HoldsAsLongAsAskedAndReleasesWhenItGoes) {
    PhysicalKeyboard watcher;
    {
        PhysicalKeyboard hand;
        hand.press(keycode::rightControl);
        EXPECT_TRUE(watcher.isDown(keycode::rightControl));
        EXPECT_FALSE(watcher.isDown(keycode::leftControl));
    }
    EXPECT_FALSE(watcher.isDown(keycode::rightControl));
    const auto before = std::chrono::steady_clock::now();
    watcher.hold(keycode::rightControl, std::chrono::milliseconds(150));
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(145));
    EXPECT_FALSE(watcher.isDown(keycode::rightControl));
}

// The loudest sample that a source hears, of full scale, while the sound is played.
double peakHeard(const QString& source, const QString& file, const QString& sink) {
    QProcess recorder;
    recorder.start(QStringLiteral("parec"),
                   {QStringLiteral("--device=") + source, QStringLiteral("--format=s16le"),
                    QStringLiteral("--rate=16000"), QStringLiteral("--channels=1"),
                    QStringLiteral("--latency-msec=20")});
    QByteArray heard;
    const auto read = [&] { return !(heard += recorder.readAllStandardOutput()).isEmpty(); };
    EXPECT_TRUE(waitUntil(read)) << "nothing is recorded";
    Playback(file, sink).wait();
    read();
    recorder.kill();
    recorder.waitForFinished();
    int peak = 0;
    for (qsizetype at = 0; at + 1 < heard.size(); at += 2) {
        qint16 sample = 0;
        std::memcpy(&sample, heard.constData() + at, sizeof sample);
        peak = std::max(peak, std::abs(static_cast<int>(sample)));
    }
    return peak / 32768.0;
}

TEST(VirtualMicrophone, HearsWhatIsPlayed) {
    const auto speech = sound::shortSentence();
    EXPECT_GT(peakHeard(QStringLiteral("virtual_mic"), speech.file, QStringLiteral("virtual_speaker")), 0.05);
}

TEST(VirtualMicrophone, APluggedOneHearsItsOwnSoundOnly) {
    const auto speech = sound::shortSentence();
    const PluggedMicrophone other(QStringLiteral("usb_headset"), QStringLiteral("USB Headset"));
    EXPECT_GT(peakHeard(QStringLiteral("usb_headset"), speech.file, other.sink()), 0.05);
    EXPECT_EQ(peakHeard(QStringLiteral("virtual_mic"), speech.file, other.sink()), 0.0);
}

TEST(VirtualMicrophone, ASoundBreaksOffWhenItsPlaybackGoes) {
    const auto streams = [] {
        return runTool(QStringLiteral("pactl"),
                       {QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sink-inputs")})
            .output;
    };
    {
        const Playback playback(sound::longSentence().file, QStringLiteral("virtual_speaker"));
        EXPECT_TRUE(waitUntil([&] { return !streams().isEmpty(); }));
    }
    constexpr std::chrono::seconds lessThanTheSentence{3};
    EXPECT_TRUE(waitUntil([&] { return streams().isEmpty(); }, lessThanTheSentence)) << streams().constData();
}

TEST(VirtualMicrophone, TheDefaultFollowsTheChoiceAndComesBackWhenUnplugged) {
    {
        const PluggedMicrophone other(QStringLiteral("usb_headset"), QStringLiteral("USB Headset"));
        EXPECT_EQ(sound::defaultSource(), QStringLiteral("virtual_mic"));
        other.makeDefault();
        EXPECT_EQ(sound::defaultSource(), QStringLiteral("usb_headset"));
    }
    EXPECT_NE(sound::defaultSource(), QStringLiteral("usb_headset"));
    sound::setDefaultSource(QStringLiteral("virtual_mic"));
}

TEST(VirtualMicrophone, TheServerComesBackAfterItsEnd) {
    sound::stopServer();
    EXPECT_THROW(sound::defaultSource(), std::runtime_error);
    sound::startServer();
    EXPECT_EQ(sound::defaultSource(), QStringLiteral("virtual_mic"));
}

} // namespace

} // namespace lorvane
