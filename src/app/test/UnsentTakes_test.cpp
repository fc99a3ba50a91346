// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/UnsentTakes.h"

#include "core/testing/DictationWorld.h"
#include "core/testing/FakeTakeJournal.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Backend = FakeDictationEndpoints;

class UnsentTakesTest : public ::testing::Test, public DictationWorld {
 protected:
    static FinishedTake takeOf(const QByteArray& audio) {
        FinishedTake take;
        take.take = Take{audio, QStringLiteral("flac")};
        take.seconds = 2.5;
        return take;
    }
    static DictationResult text(const QString& said) {
        DictationResponse response;
        response.text = said;
        return response;
    }
    void deliver() {
        const TaskHandle task =
            startTask([this](TaskScope scope) { return unsent.deliver(backend, journal, scope); });
        advance(1);
        EXPECT_FALSE(task.isRunning());
    }

    QTemporaryDir folder;
    UnsentTakes unsent{world.foundation, folder.filePath("unsent")};
};

TEST_F(UnsentTakesTest, ATakeThatWasKeptIsSentAndItsTextIsInTheJournal) {
    EXPECT_TRUE(unsent.isEmpty());
    ASSERT_TRUE(unsent.keep(takeOf("audio")));
    EXPECT_FALSE(unsent.isEmpty());
    backend.uploads.push_back(Backend::answer(text(" said before ")));
    deliver();
    ASSERT_EQ(backend.uploadRequests.size(), 1U);
    EXPECT_EQ(backend.uploadRequests[0].audio, "audio");
    EXPECT_EQ(backend.uploadRequests[0].ext, "flac");
    ASSERT_EQ(journal.takes.size(), 1U);
    EXPECT_EQ(journal.takes[0].text, "said before");
    EXPECT_EQ(journal.takes[0].durationSec, 2.5);
    EXPECT_TRUE(unsent.isEmpty());
}

TEST_F(UnsentTakesTest, ATakeThatTheBackendDoesNotAnswerStays) {
    ASSERT_TRUE(unsent.keep(takeOf("audio")));
    backend.uploads.push_back(Backend::answer(failure(DictationError(TransportError{}))));
    deliver();
    EXPECT_FALSE(unsent.isEmpty());
    EXPECT_TRUE(journal.takes.empty());
}

TEST_F(UnsentTakesTest, ATakeIsSentUnderTheIdThatTheBackendKnows) {
    FinishedTake sent = takeOf("audio");
    sent.takeID = QStringLiteral("known");
    ASSERT_TRUE(unsent.keep(sent));
    backend.uploads.push_back(Backend::answer(text("said before")));
    deliver();
    ASSERT_EQ(backend.uploadRequests.size(), 1U);
    EXPECT_EQ(backend.uploadRequests[0].takeID, QStringLiteral("known"));
}

TEST_F(UnsentTakesTest, ATakeThatWasNeverSentKeepsOneIdOverAllTries) {
    ASSERT_TRUE(unsent.keep(takeOf("audio")));
    backend.uploads.push_back(Backend::answer(failure(DictationError(TransportError{}))));
    backend.uploads.push_back(Backend::answer(text("said before")));
    deliver();
    deliver();
    ASSERT_EQ(backend.uploadRequests.size(), 2U);
    EXPECT_FALSE(backend.uploadRequests[0].takeID->isEmpty());
    EXPECT_EQ(backend.uploadRequests[0].takeID, backend.uploadRequests[1].takeID);
}

TEST_F(UnsentTakesTest, OfTwoProcessesOneDeliversATake) {
    ASSERT_TRUE(unsent.keep(takeOf("audio")));
    backend.uploads.push_back(Backend::answer(text("said before")));
    const UnsentTakes other{world.foundation, folder.filePath("unsent")};
    const TaskHandle first =
        startTask([this](TaskScope scope) { return unsent.deliver(backend, journal, scope); });
    ASSERT_TRUE(first.isRunning()) << "its text is in the history, but the file is not gone yet";
    const TaskHandle second =
        startTask([&](TaskScope scope) { return other.deliver(backend, journal, scope); });
    EXPECT_FALSE(second.isRunning());
    advance(1);
    EXPECT_EQ(backend.uploadRequests.size(), 1U);
    EXPECT_EQ(journal.takes.size(), 1U);
    EXPECT_TRUE(unsent.isEmpty());
}

TEST_F(UnsentTakesTest, ATakeOfAProcessThatEndedWhileDeliveringIsDelivered) {
    ASSERT_TRUE(unsent.keep(takeOf("audio")));
    backend.uploads.push_back(Backend::answer(text("said before")));
    {
        const TaskHandle first =
            startTask([this](TaskScope scope) { return unsent.deliver(backend, journal, scope); });
        ASSERT_TRUE(first.isRunning());
    }
    backend.uploads.push_back(Backend::answer(text("said before")));
    deliver();
    EXPECT_EQ(backend.uploadRequests.size(), 2U);
    EXPECT_TRUE(unsent.isEmpty());
}

TEST_F(UnsentTakesTest, ATakeWithoutSpeechGoesAway) {
    ASSERT_TRUE(unsent.keep(takeOf("audio")));
    backend.uploads.push_back(Backend::answer(failure(DictationError(Failure{Failure::Kind::noSpeech}))));
    deliver();
    EXPECT_TRUE(unsent.isEmpty());
}

TEST_F(UnsentTakesTest, WhatIsNoTakeGoesAwayWithoutBeingSent) {
    ASSERT_TRUE(QDir().mkpath(folder.filePath("unsent")));
    QFile file(folder.filePath("unsent/1.json"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("no json");
    file.close();
    deliver();
    EXPECT_TRUE(backend.uploadRequests.empty());
    EXPECT_TRUE(unsent.isEmpty());
}

TEST_F(UnsentTakesTest, NobodyElseMayReadATake) {
    ASSERT_TRUE(unsent.keep(takeOf("audio")));
    const QDir kept(folder.filePath("unsent"));
    const auto others = QFileDevice::ReadGroup | QFileDevice::ReadOther;
    EXPECT_FALSE(QFile::permissions(kept.filePath(kept.entryList(QDir::Files).first())) & others);
}

TEST_F(UnsentTakesTest, NothingIsKeptOfATakeThatHoldsNothing) {
    EXPECT_FALSE(unsent.keep(FinishedTake()));
    EXPECT_TRUE(unsent.isEmpty());
}

} // namespace

} // namespace lorvane
