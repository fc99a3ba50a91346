// SPDX-License-Identifier: GPL-3.0-or-later
#include "DictationDesk.h"
#include "support/VirtualMicrophone.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <csignal>
#include <iostream>
#include <optional>
#include <set>

namespace lorvane {

namespace {

using std::chrono::milliseconds;

struct ProcessState {
    QString name;
    qint64 parent = 0;
};

// Of a process that runs: one that has ended and was not fetched yet does not.
std::optional<ProcessState> stateOf(const QString& pid) {
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    static const QRegularExpression fields(QStringLiteral("^\\d+ \\((.*)\\) (\\S) (\\d+) "));
    const auto found = fields.match(QString::fromUtf8(file.readAll()));
    if (!found.hasMatch() || found.captured(2) == QLatin1String("Z")) {
        return std::nullopt;
    }
    return ProcessState{found.captured(1), found.captured(3).toLongLong()};
}

// The running child of the process with this name; 0 when there is none.
qint64 childNamed(const QString& name, qint64 parent) {
    for (const QString& entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        const auto state = entry.toLongLong() == 0 ? std::nullopt : stateOf(entry);
        if (state && state->name == name && state->parent == parent) {
            return entry.toLongLong();
        }
    }
    return 0;
}

bool runs(qint64 pid) { return stateOf(QString::number(pid)).has_value(); }

std::set<QString> wordsOf(const QString& text) {
    std::set<QString> words;
    static const QRegularExpression notLetters(QStringLiteral("[^a-z]+"));
    for (const QString& word : text.toLower().split(notLetters, Qt::SkipEmptyParts)) {
        words.insert(word);
    }
    return words;
}

class BundledBackend : public DictationDesk {
 protected:
    void startAlone() { program = std::make_unique<LorvaneProgram>(); }
    [[nodiscard]] qint64 child() const {
        return childNamed(QStringLiteral("lorvane-backend"), program->pid());
    }
    /// Another child than `before`; 0 when none comes.
    [[nodiscard]] qint64 nextChild(qint64 before = 0) const {
        qint64 found = 0;
        (void)waitUntil([&] { return (found = child()) != 0 && found != before; });
        return found == before ? 0 : found;
    }
    static void end(qint64 pid) { ::kill(static_cast<pid_t>(pid), SIGKILL); }
    void speak(const SpeechSample& speech) {
        hand.press(holdKey);
        EXPECT_TRUE(program->waitForPhase(QStringLiteral("recording")));
        Playback(speech.file, QStringLiteral("virtual_speaker")).wait();
        hand.release(holdKey);
    }
    /// Speaks; how many of the words stand in the editor afterwards.
    int wordsThatLand(const SpeechSample& speech) {
        const auto editor = DesktopApp::mousepad();
        speak(speech);
        EXPECT_TRUE(goesThrough(delivered, recognition));
        const QString text = editor->waitForText([](const QString& seen) { return !seen.isEmpty(); });
        std::cout << "said: " << speech.words.toStdString() << "\nlanded: " << text.toStdString() << "\n";
        return wordsIn(text, speech);
    }
    static int wordsIn(const QString& text, const SpeechSample& speech) {
        int found = 0;
        const std::set<QString> landed = wordsOf(text);
        for (const QString& word : wordsOf(speech.words)) {
            found += static_cast<int>(landed.count(word));
        }
        return found;
    }
    static constexpr std::chrono::minutes recognition{1};
};

TEST_F(BundledBackend, WhatIsSpokenLands) {
    const SpeechSample speech = sound::shortSentence();
    startAlone();
    EXPECT_GE(wordsThatLand(speech) * 2, static_cast<int>(wordsOf(speech.words).size()));
}

TEST_F(BundledBackend, EndsWithTheProgramThatIsKilledAtItsStart) {
    startAlone();
    const qint64 backendId = nextChild();
    ASSERT_NE(backendId, 0);
    program->kill();
    EXPECT_TRUE(waitUntil([&] { return !runs(backendId); })) << "process " << backendId << " still runs";
}

TEST_F(BundledBackend, EndsWithTheProgramThatIsKilledLater) {
    startAlone();
    const qint64 backendId = nextChild();
    ASSERT_NE(backendId, 0);
    ASSERT_TRUE(waitUntil([&] { return !storedToken().isEmpty(); })) << "the backend does not answer";
    program->kill();
    EXPECT_TRUE(waitUntil([&] { return !runs(backendId); })) << "process " << backendId << " still runs";
}

TEST_F(BundledBackend, EndsWithTheProgramThatIsToldToQuit) {
    startAlone();
    const qint64 backendId = nextChild();
    ASSERT_NE(backendId, 0);
    EXPECT_EQ(program->run({QStringLiteral("quit")}), 0);
    EXPECT_TRUE(waitUntil([&] { return !program->isRunning(); }));
    EXPECT_FALSE(runs(backendId));
}

TEST_F(BundledBackend, IsStartedAgainWhenItDiesAndTheNextTakeWorks) {
    const SpeechSample speech = sound::shortSentence();
    startAlone();
    const qint64 first = nextChild();
    ASSERT_NE(first, 0);
    end(first);
    ASSERT_NE(nextChild(first), 0);
    EXPECT_GE(wordsThatLand(speech) * 2, static_cast<int>(wordsOf(speech.words).size()));
}

TEST_F(BundledBackend, KilledInMidTakeTheTakeGoesToTheNextOneWhole) {
    const SpeechSample speech = sound::shortSentence();
    const auto editor = DesktopApp::mousepad();
    startAlone();
    const qint64 first = nextChild();
    ASSERT_NE(first, 0);
    speak(speech);
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("processing")));
    end(first);
    EXPECT_TRUE(goesThrough(delivered, recognition));
    EXPECT_NE(child(), first);
    EXPECT_THAT(program->log().toStdString(), ::testing::HasSubstr("stream dropped, falling back"));
    const QString text = editor->waitForText([](const QString& seen) { return !seen.isEmpty(); });
    EXPECT_GE(wordsIn(text, speech) * 2, static_cast<int>(wordsOf(speech.words).size()))
        << text.toStdString();
}

TEST_F(BundledBackend, DyingMoreThanFiveTimesInAMinuteIsTold) {
    startAlone();
    qint64 running = nextChild();
    for (int restart = 1; restart <= 5; ++restart) {
        ASSERT_NE(running, 0) << "restart " << restart;
        end(running);
        running = nextChild(running);
    }
    ASSERT_NE(running, 0) << "not started the fifth time";
    EXPECT_EQ(program->phases(), QStringList());
    end(running);
    EXPECT_TRUE(
        goesThrough({noticePhase(QStringLiteral("The local backend keeps stopping — see \"lorvane doctor\"")),
                     QStringLiteral("idle")}));
    EXPECT_EQ(child(), 0);
}

} // namespace

} // namespace lorvane
