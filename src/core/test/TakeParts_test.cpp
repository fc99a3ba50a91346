// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TakeParts.h"

#include "core/testing/DictationWorld.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

/// PCM of one value, long enough to be a part.
QByteArray pcm(char value, qsizetype bytes = 4'000) { return QByteArray(bytes, value); }

class TakePartsTest : public ::testing::Test, public DictationWorld {
 protected:
    /// A part whose answer the test gives later.
    Completion<std::optional<QString>> takePart(char value) {
        FakePart script;
        backend.parts.push_back(script);
        parts.takePart(pcm(value));
        return script.outcome;
    }
    void takeAnsweredPart(char value, const std::optional<QString>& text) { takePart(value).complete(text); }
};

TEST_F(TakePartsTest, WithoutPartsTheTailIsTheWholeTake) {
    const AssembledTail tail = parts.assembleTail(pcm('t'));
    EXPECT_EQ(tail.prefix, "");
    EXPECT_EQ(tail.rest, pcm('t'));
    EXPECT_TRUE(world.lines.isEmpty());
}

TEST_F(TakePartsTest, PartIsSentEncodedWithTheTextBeforeIt) {
    takeAnsweredPart('a', "One.");
    takeAnsweredPart('b', "");
    takeAnsweredPart('c', "Three.");
    takePart('d');
    ASSERT_EQ(backend.partRequests.size(), 4U);
    EXPECT_EQ(backend.partRequests[0].ext, "m4a");
    EXPECT_EQ(backend.partRequests[0].audio.size(), 500);
    EXPECT_EQ(backend.partRequests[0].context, "");
    EXPECT_EQ(backend.partRequests[2].context, "One.");
    EXPECT_EQ(backend.partRequests[3].context, "One. Three.");
}

TEST_F(TakePartsTest, PriorTextEndsAtTheFirstPartThatIsNotBack) {
    takeAnsweredPart('a', "One.");
    takePart('b');
    takeAnsweredPart('c', "Three.");
    takePart('d');
    EXPECT_EQ(backend.partRequests[3].context, "One.");
}

TEST_F(TakePartsTest, PartTooShortForATakeUsesNoIndex) {
    parts.takePart(pcm('x', 100));
    EXPECT_TRUE(backend.partRequests.empty());
    takeAnsweredPart('a', "One");
    EXPECT_EQ(parts.assembleTail(pcm('t')).prefix, "One");
}

TEST_F(TakePartsTest, AllPartsBackLeaveOnlyTheTail) {
    takeAnsweredPart('a', "One");
    takeAnsweredPart('b', "two");
    const AssembledTail tail = parts.assembleTail(pcm('t'));
    EXPECT_EQ(tail.prefix, "One two");
    EXPECT_EQ(tail.rest, pcm('t'));
    EXPECT_TRUE(logged("tirra-part").isEmpty());
}

TEST_F(TakePartsTest, LastPartThatIsNotBackRidesWithTheTail) {
    takeAnsweredPart('a', "One");
    takePart('b');
    const AssembledTail tail = parts.assembleTail(pcm('t'));
    EXPECT_EQ(tail.prefix, "One");
    EXPECT_EQ(tail.rest, pcm('b') + pcm('t'));
    EXPECT_EQ(logged("tirra-part"),
              QStringList{"[tirra-part] 1 of 2 parts came back; the rest rides with the tail"});
}

TEST_F(TakePartsTest, GapMakesLaterTextsUseless) {
    takeAnsweredPart('a', "Zero");
    takeAnsweredPart('b', std::nullopt);
    takeAnsweredPart('c', "two");
    const AssembledTail tail = parts.assembleTail(pcm('t'));
    EXPECT_EQ(tail.prefix, "Zero");
    EXPECT_EQ(tail.rest, pcm('b') + pcm('c') + pcm('t'));
    EXPECT_EQ(logged("tirra-part"),
              QStringList{"[tirra-part] 1 of 3 parts came back; the rest rides with the tail"});
}

TEST_F(TakePartsTest, EmptyTextCountsAsComeBack) {
    takeAnsweredPart('a', "");
    takeAnsweredPart('b', "two");
    const AssembledTail tail = parts.assembleTail(pcm('t'));
    EXPECT_EQ(tail.prefix, "two");
    EXPECT_EQ(tail.rest, pcm('t'));
}

TEST_F(TakePartsTest, RepliesMayComeInAnyOrder) {
    const auto first = takePart('a');
    const auto second = takePart('b');
    second.complete(QString("two"));
    first.complete(QString("one"));
    EXPECT_EQ(parts.assembleTail({}).prefix, "one two");
}

TEST_F(TakePartsTest, ClearedPartsAreForgottenAndTheirRequestsEnd) {
    const auto pending = takePart('a');
    parts.clearParts();
    EXPECT_EQ(backend.cancelledCalls, 1);
    pending.complete(QString("late"));
    const AssembledTail tail = parts.assembleTail(pcm('t'));
    EXPECT_EQ(tail.prefix, "");
    EXPECT_EQ(tail.rest, pcm('t'));
    takeAnsweredPart('n', "new");
    EXPECT_EQ(backend.partRequests.back().context, "");
    EXPECT_EQ(parts.assembleTail({}).prefix, "new");
}

TEST_F(TakePartsTest, SentenceEndOfACutIsTakenAway) {
    EXPECT_EQ(withoutSentenceEnd(" And then. "), "And then");
    EXPECT_EQ(withoutSentenceEnd("Well…"), "Well");
    EXPECT_EQ(withoutSentenceEnd("Well . … ..\n"), "Well");
    EXPECT_EQ(withoutSentenceEnd("Really?"), "Really?");
    EXPECT_EQ(withoutSentenceEnd("..."), "");
    EXPECT_EQ(withoutSentenceEnd("e.g. this"), "e.g. this");
}

TEST_F(TakePartsTest, PrefixHasNoSentenceEndsAndNoEmptyPieces) {
    takeAnsweredPart('a', "First.");
    takeAnsweredPart('b', "…");
    takeAnsweredPart('c', " second… ");
    EXPECT_EQ(parts.assembleTail({}).prefix, "First second");
}

TEST_F(TakePartsTest, WholeTakeIsDumpedWhenThatIsWanted) {
    preferences.set(preference::dumpTakes, true);
    takeAnsweredPart('a', "One");
    const AssembledTail tail = parts.assembleTail(pcm('t'));
    const QStringList whole = QDir(folder.path()).entryList({"tirra-whole-*.wav"});
    ASSERT_EQ(whole.size(), 1);
    QFile file(folder.filePath(whole.first()));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), TakeEncoder::makeWav(pcm('a') + pcm('t')));
}

// --- The parts in a whole dictation ----------------------------------------------------------------------

TEST_F(TakePartsTest, TakeSendsItsTailWithThePrefix) {
    start();
    keyboard.press(Hotkey::rightCommand);
    speak(1);
    FakePart script;
    backend.parts.push_back(script);
    recorder.onPart(pcm('a'));
    script.outcome.complete(QString("So far."));
    keyboard.release(Hotkey::rightCommand);
    ASSERT_EQ(backend.streamRequests.size(), 1U);
    EXPECT_EQ(backend.streamRequests[0].prefix, "So far");
    EXPECT_EQ(backend.streamRequests[0].ext, "m4a");
    EXPECT_FALSE(recorder.onPart);
}

TEST_F(TakePartsTest, TailTooShortIsSentEmptyWhenThereIsAPrefix) {
    start();
    keyboard.press(Hotkey::rightCommand);
    FakePart script;
    backend.parts.push_back(script);
    recorder.onPart(pcm('a'));
    script.outcome.complete(QString("So far."));
    advance(1);
    keyboard.release(Hotkey::rightCommand);
    ASSERT_EQ(backend.streamRequests.size(), 1U);
    EXPECT_EQ(backend.streamRequests[0].prefix, "So far");
    EXPECT_EQ(backend.streamRequests[0].ext, "wav");
    EXPECT_TRUE(backend.streamRequests[0].audio.isEmpty());
}

TEST_F(TakePartsTest, PartsLastOverRetriesAndEndWithTheDelivery) {
    start();
    backend.streams.push_back(
        FakeDictationEndpoints::answer(FakeDictationEndpoints::failed(Failure::Kind::server)));
    backend.streams.push_back(
        FakeDictationEndpoints::answer(FakeDictationEndpoints::failed(Failure::Kind::noSpeech)));
    keyboard.press(Hotkey::rightCommand);
    speak(1);
    takeAnsweredPart('a', "One");
    keyboard.release(Hotkey::rightCommand);
    EXPECT_EQ(parts.assembleTail({}).prefix, "One");
    advance(1.2);
    EXPECT_EQ(backend.streamRequests.size(), 2U);
    EXPECT_EQ(backend.streamRequests[1].prefix, "One");
    EXPECT_EQ(parts.assembleTail({}).prefix, "");
}

TEST_F(TakePartsTest, PartsAreClearedByEachWayOutOfATake) {
    start();
    const auto recordWithPart = [&] {
        advance(10);
        keyboard.press(Hotkey::rightCommand);
        speak(1.5);
        takeAnsweredPart('a', "One");
    };
    recordWithPart();
    escape();
    EXPECT_EQ(parts.assembleTail({}).prefix, "");
    keyboard.release(Hotkey::rightCommand);

    backend.streams.push_back(FakeDictationEndpoints::answer(backend.otherwise, {}, seconds(5)));
    recordWithPart();
    keyboard.release(Hotkey::rightCommand);
    escape();
    EXPECT_EQ(parts.assembleTail({}).prefix, "");

    takeAnsweredPart('b', "left over");
    keyboard.press(Hotkey::rightCommand);
    EXPECT_EQ(parts.assembleTail({}).prefix, "");
}

} // namespace

} // namespace lorvane
