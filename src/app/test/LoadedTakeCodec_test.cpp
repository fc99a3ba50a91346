// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CodecKeeper.h"

#include "base/testing/TestFoundation.h"

#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

namespace lorvane {

namespace {

struct LoadedTakeCodecTest : public testing::Test {
    /// Whether the codec's libraries are in this process.
    static bool isInMemory() {
        QFile maps(QStringLiteral("/proc/self/maps"));
        return maps.open(QIODevice::ReadOnly) && maps.readAll().contains("lorvane-codec.so");
    }
    Result<void, QString> write(const QString& name) {
        return codec.writeFile(QByteArray(32'000, '\0'), settings, folder.filePath(name));
    }

    TestFoundation world;
    QTemporaryDir folder;
    TakeSettings settings{.format = TakeFormat::aac, .bitRate = 32'000};
    LoadedTakeCodec codec{LoadedTakeCodec::standardModule(), world.log};
    CodecKeeper keeper{world.clock, codec};
};

TEST_F(LoadedTakeCodecTest, IsLoadedByTheFirstFileAndLetGoWhenAsked) {
    EXPECT_FALSE(isInMemory());
    for (int round = 0; round < 3; ++round) {
        const auto written = write("take.m4a");
        ASSERT_TRUE(written) << written.error().toStdString();
        EXPECT_GT(QFile(folder.filePath("take.m4a")).size(), 0);
        EXPECT_TRUE(isInMemory());
        codec.letGo();
        EXPECT_FALSE(isInMemory());
    }
}

LoadedTakeCodecTest* atTheEnd = nullptr;

void writeAtTheEnd() { _exit(atTheEnd->write("last.m4a") ? 0 : 1); }

TEST_F(LoadedTakeCodecTest, WritesATakeWhileTheProcessEnds) {
    const auto endProcess = [this] {
        atTheEnd = this;
        std::atexit(writeAtTheEnd); // before the module is there, so that its own end comes first
        codec.load();
        std::exit(1);
    };
    EXPECT_EXIT(endProcess(), testing::ExitedWithCode(0), "");
    EXPECT_GT(QFile(folder.filePath("last.m4a")).size(), 0);
}

TEST_F(LoadedTakeCodecTest, AFailureReadsTheSameAfterItIsLetGo) {
    const auto written = write("no such folder/take.m4a");
    ASSERT_FALSE(written);
    codec.letGo();
    EXPECT_FALSE(written.error().isEmpty());
}

TEST_F(LoadedTakeCodecTest, WithoutItsModuleEveryFileFailsAndTheLogSaysWhy) {
    LoadedTakeCodec missing(folder.filePath("nothing.so"), world.log);
    EXPECT_FALSE(missing.writeFile({}, settings, folder.filePath("take.m4a")));
    ASSERT_FALSE(world.lines.isEmpty());
    EXPECT_TRUE(world.lines.last().contains("nothing.so")) << world.lines.last().toStdString();
}

TEST_F(LoadedTakeCodecTest, IsThereWhileTakesFollowEachOtherAndGoesAWhileAfterTheLast) {
    keeper.follow(Recording{});
    keeper.finishLoading();
    EXPECT_TRUE(codec.isLoaded());
    keeper.follow(Processing{});
    keeper.follow(Idle{});
    world.clock.advance(CodecKeeper::patience - seconds(1));
    EXPECT_TRUE(codec.isLoaded());
    keeper.follow(Recording{});
    keeper.finishLoading();
    world.clock.advance(seconds(120));
    EXPECT_TRUE(codec.isLoaded());
    keeper.follow(Idle{});
    world.clock.advance(CodecKeeper::patience);
    EXPECT_FALSE(codec.isLoaded());
}

} // namespace

} // namespace lorvane
