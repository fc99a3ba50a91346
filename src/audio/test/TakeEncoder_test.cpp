// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/TakeEncoder.h"
#include "audio/testing/FakeTakeCodec.h"
#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtEndian>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

quint32 number(const QByteArray& bytes, qsizetype offset) {
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}
quint16 shortNumber(const QByteArray& bytes, qsizetype offset) {
    return qFromLittleEndian<quint16>(bytes.constData() + offset);
}

const auto aacOut = QStringLiteral("[tirra-encode] aac unavailable — falling back to flac");

class TakeEncoderTest : public ::testing::Test {
 protected:
    void TearDown() override {
        EXPECT_EQ(QDir(temporary.path()).entryList(QDir::Files), QStringList()) << "left behind";
    }
    QStringList dumps() const { return QDir(downloads.path()).entryList(QDir::Files); }
    void switchDumpsOn() { world.preferences.set(preference::dumpTakes, true); }
    QString dumpName(const QString& label) const {
        // The virtual clock begins at 2026-01-05 10:00:00 UTC.
        return QStringLiteral("tirra-") + label + QStringLiteral("-1767607200000.wav");
    }

    TestFoundation world;
    FakeTakeCodec codec;
    QTemporaryDir temporary;
    QTemporaryDir downloads;
    TakeEncoder encoder{world.foundation, codec, {temporary.path(), downloads.path()}};
    const QByteArray pcm = QByteArray(32'000, 'p');
};

TEST_F(TakeEncoderTest, AacGoesFirst) {
    codec.content[TakeFormat::aac] = "an m4a file";
    EXPECT_EQ(encoder.encodeTake(pcm), (Take{"an m4a file", QStringLiteral("m4a")}));
    EXPECT_TRUE(world.lines.isEmpty());
    ASSERT_EQ(codec.calls.size(), 1U);
    const auto& [samples, settings, path] = codec.calls.front();
    EXPECT_EQ(samples, pcm);
    EXPECT_EQ(settings.format, TakeFormat::aac);
    EXPECT_EQ(settings.sampleRate, 16'000);
    EXPECT_EQ(settings.channels, 1);
    EXPECT_EQ(settings.bitRate, 32'000);
}

TEST_F(TakeEncoderTest, TheFileIsNamedAfterAFreshIdentifierInTheTemporaryFolder) {
    ASSERT_TRUE(encoder.encodeTake(pcm));
    ASSERT_TRUE(encoder.encodeTake(pcm));
    const QRegularExpression pattern("^" + QRegularExpression::escape(temporary.path()) +
                                     "/tirra-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.m4a$");
    EXPECT_TRUE(pattern.match(codec.calls[0].path).hasMatch()) << codec.calls[0].path.toStdString();
    EXPECT_NE(codec.calls[0].path, codec.calls[1].path);
}

TEST_F(TakeEncoderTest, ATenthOfASecondIsNoTake) {
    for (const bool on : {false, true}) {
        world.preferences.set(preference::dumpTakes, on);
        EXPECT_EQ(encoder.encodeTake(QByteArray(3'200, 'p')), std::nullopt);
    }
    EXPECT_EQ(encoder.encodeTake({}), std::nullopt);
    EXPECT_TRUE(codec.calls.empty());
    EXPECT_TRUE(world.lines.isEmpty());
    EXPECT_EQ(dumps(), QStringList());
}

TEST_F(TakeEncoderTest, TheOddByteOfTheShortestTakeStaysOutOfAacAndFlacAndInWav) {
    const QByteArray shortest = QByteArray(3'200, 'p') + 'o';
    codec.failures = {{TakeFormat::aac, "a"}, {TakeFormat::flac, "f"}};
    const auto take = encoder.encodeTake(shortest);
    ASSERT_EQ(codec.calls.size(), 2U);
    EXPECT_EQ(codec.calls[0].samples, shortest.first(3'200));
    EXPECT_EQ(codec.calls[1].samples, shortest.first(3'200));
    ASSERT_TRUE(take);
    EXPECT_EQ(take->ext, QStringLiteral("wav"));
    EXPECT_EQ(number(take->data, 40), 3'201U);
    EXPECT_EQ(take->data.mid(44), shortest);
}

TEST_F(TakeEncoderTest, AnAacFileAsLargeAsThePcmIsThrownAway) {
    codec.content = {{TakeFormat::aac, pcm}, {TakeFormat::flac, "flac"}};
    EXPECT_EQ(encoder.encodeTake(pcm), (Take{"flac", QStringLiteral("flac")}));
    EXPECT_EQ(world.lines, QStringList{aacOut});
    EXPECT_TRUE(codec.calls[1].path.endsWith(QStringLiteral(".flac")));
    EXPECT_EQ(codec.calls[1].settings.bitDepth, 16);
    EXPECT_EQ(codec.calls[1].settings.sampleRate, 16'000);
}

TEST_F(TakeEncoderTest, AnAacFileOneByteSmallerThanThePcmIsTaken) {
    codec.content = {{TakeFormat::aac, pcm.chopped(1)}};
    EXPECT_EQ(encoder.encodeTake(pcm)->ext, QStringLiteral("m4a"));
}

TEST_F(TakeEncoderTest, AFailingAacWritesTwoLines) {
    codec.failures = {{TakeFormat::aac, "no encoder"}};
    EXPECT_EQ(encoder.encodeTake(pcm)->ext, QStringLiteral("flac"));
    EXPECT_EQ(world.lines, (QStringList{QStringLiteral("[tirra-encode] aac failed: no encoder"), aacOut}));
}

TEST_F(TakeEncoderTest, WavIsTheFloorAndTheLineCountsThePcm) {
    codec.failures = {{TakeFormat::aac, "no aac"}, {TakeFormat::flac, "no flac"}};
    const auto take = encoder.encodeTake(pcm);
    EXPECT_EQ(take, (Take{TakeEncoder::makeWav(pcm), QStringLiteral("wav")}));
    EXPECT_EQ(world.lines,
              (QStringList{QStringLiteral("[tirra-encode] aac failed: no aac"), aacOut,
                           QStringLiteral("[tirra-encode] flac failed: no flac"),
                           QStringLiteral("[tirra-encode] flac unavailable — sending wav (32000 bytes)")}));
}

TEST_F(TakeEncoderTest, AFlacFileAsLargeAsThePcmIsThrownAwayThoughAWavIsLarger) {
    codec.content = {{TakeFormat::aac, pcm}, {TakeFormat::flac, pcm}};
    EXPECT_EQ(encoder.encodeTake(pcm)->ext, QStringLiteral("wav"));
    EXPECT_EQ(
        world.lines,
        (QStringList{aacOut, QStringLiteral("[tirra-encode] flac unavailable — sending wav (32000 bytes)")}));
}

TEST_F(TakeEncoderTest, AnEmptyFileIsThrownAway) {
    codec.content = {{TakeFormat::aac, ""}, {TakeFormat::flac, ""}};
    EXPECT_EQ(encoder.encodeTake(pcm), (Take{TakeEncoder::makeWav(pcm), QStringLiteral("wav")}));
    EXPECT_EQ(world.lines.size(), 2);
}

TEST_F(TakeEncoderTest, AFileThatCannotBeReadBackFailed) {
    codec.losesFiles = true;
    EXPECT_EQ(encoder.encodeTake(pcm)->ext, QStringLiteral("wav"));
    ASSERT_EQ(world.lines.size(), 4);
    EXPECT_TRUE(world.lines[0].startsWith(QStringLiteral("[tirra-encode] aac failed: ")));
    EXPECT_TRUE(world.lines[2].startsWith(QStringLiteral("[tirra-encode] flac failed: ")));
}

TEST_F(TakeEncoderTest, WithoutATemporaryFolderAWavStillGoesOut) {
    const TakeEncoder homeless(world.foundation, codec, {temporary.filePath("nowhere"), downloads.path()});
    EXPECT_EQ(homeless.encodeTake(pcm)->ext, QStringLiteral("wav"));
    EXPECT_TRUE(codec.calls.empty());
    EXPECT_TRUE(world.lines[0].startsWith(QStringLiteral("[tirra-encode] aac failed: ")));
}

TEST_F(TakeEncoderTest, NobodyElseCanReadTheTemporaryFile) {
    struct Looking final : TakeCodec {
        QFile::Permissions seen;
        Result<void, QString> writeFile(const QByteArray&, const TakeSettings&,
                                        const QString& path) override {
            seen = QFile::permissions(path);
            return failure(QStringLiteral("seen enough"));
        }
    } looking;
    ASSERT_TRUE(TakeEncoder(world.foundation, looking, {temporary.path(), {}}).encodeTake(pcm));
    EXPECT_EQ(looking.seen & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    EXPECT_TRUE(looking.seen & QFile::ReadOwner);
}

TEST(MakeWav, HasTheHeaderToTheByte) {
    const QByteArray pcm("\x01\x02\x03\x04\x05", 5);
    const QByteArray wav = TakeEncoder::makeWav(pcm);
    ASSERT_EQ(wav.size(), 44 + 5);
    EXPECT_EQ(wav.mid(0, 4), "RIFF");
    EXPECT_EQ(number(wav, 4), 36U + 5U);
    EXPECT_EQ(wav.mid(8, 8), "WAVEfmt ");
    EXPECT_EQ(number(wav, 16), 16U);
    EXPECT_EQ(shortNumber(wav, 20), 1U);
    EXPECT_EQ(shortNumber(wav, 22), 1U);
    EXPECT_EQ(number(wav, 24), 16'000U);
    EXPECT_EQ(number(wav, 28), 32'000U);
    EXPECT_EQ(shortNumber(wav, 32), 2U);
    EXPECT_EQ(shortNumber(wav, 34), 16U);
    EXPECT_EQ(wav.mid(36, 4), "data");
    EXPECT_EQ(number(wav, 40), 5U);
    EXPECT_EQ(wav.mid(44), pcm);
    EXPECT_EQ(TakeEncoder::makeWav({}).size(), 44);
}

TEST_F(TakeEncoderTest, WithTheDumpOnATakeLeavesAWavOfItsPart) {
    switchDumpsOn();
    ASSERT_TRUE(encoder.encodeTake(pcm));
    EXPECT_EQ(dumps(), QStringList{dumpName("part")});
    QFile file(downloads.filePath(dumpName("part")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), TakeEncoder::makeWav(pcm));
    EXPECT_EQ(world.lines, QStringList{QStringLiteral("dumped part → ") + dumpName("part") +
                                       QStringLiteral(" (32044 bytes)")});
}

TEST_F(TakeEncoderTest, TheDumpBearsTheLabelItIsGiven) {
    switchDumpsOn();
    encoder.dumpTake(pcm, QStringLiteral("whole"));
    EXPECT_EQ(dumps(), QStringList{dumpName("whole")});
}

TEST_F(TakeEncoderTest, NothingIsDumpedUnlessThePreferenceSaysSo) {
    encoder.dumpTake(pcm, QStringLiteral("whole"));
    world.preferences.set(preference::dumpTakes, false);
    encoder.dumpTake(pcm, QStringLiteral("whole"));
    EXPECT_EQ(dumps(), QStringList());
    EXPECT_TRUE(world.lines.isEmpty());
}

TEST_F(TakeEncoderTest, WhatIsNoTakeIsNotDumped) {
    switchDumpsOn();
    encoder.dumpTake(QByteArray(3'200, 'p'), QStringLiteral("whole"));
    EXPECT_EQ(dumps(), QStringList());
    EXPECT_TRUE(world.lines.isEmpty());
}

TEST_F(TakeEncoderTest, WithoutADownloadsFolderNothingIsDumped) {
    switchDumpsOn();
    TakeEncoder(world.foundation, codec, {temporary.path(), {}}).dumpTake(pcm, QStringLiteral("whole"));
    EXPECT_TRUE(world.lines.isEmpty());
}

TEST_F(TakeEncoderTest, ADumpThatCannotBeWrittenIsLoggedAllTheSame) {
    switchDumpsOn();
    const TakeEncoder blocked(world.foundation, codec, {temporary.path(), downloads.filePath("gone")});
    blocked.dumpTake(pcm, QStringLiteral("whole"));
    EXPECT_EQ(world.lines.size(), 1);
    EXPECT_TRUE(world.lines[0].startsWith(QStringLiteral("dumped whole → tirra-whole-")));
}

} // namespace

} // namespace lorvane
