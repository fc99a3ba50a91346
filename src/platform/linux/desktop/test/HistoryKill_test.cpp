// SPDX-License-Identifier: GPL-3.0-or-later
// A program that is killed at any moment of a write leaves the old file or the new one, whole.
#include "history/Backup.h"
#include "platform/linux/desktop/DiskStateFile.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <random>

namespace lorvane {

namespace {

constexpr int bound = 20'000;
constexpr std::size_t itemsEach = 1'000;

class Killed : public ::testing::Test {
 protected:
    QString path() const { return folder_.filePath(QStringLiteral("tirra-history.json")); }

    /// Starts the writer, lets it write for a random time and kills it. What it said: the number of each
    /// write that had ended.
    QList<QByteArray> writeAndKill(const QString& what) {
        QProcess writer;
        writer.start(QStringLiteral(HISTORY_WRITER), {what, path(), QString::number(itemsEach)});
        EXPECT_TRUE(writer.waitForStarted(bound) && writer.waitForReadyRead(bound));
        const auto until = std::chrono::steady_clock::now() + std::chrono::microseconds(random_() % 30'000);
        while (std::chrono::steady_clock::now() < until) {
        }
        writer.kill();
        EXPECT_TRUE(writer.waitForFinished(bound));
        QList<QByteArray> said = writer.readAllStandardOutput().split('\n');
        said.removeLast(); // a line that has its end is whole
        return said;
    }
    /// The number of the write that the file is from, 0 without a file; -1 when it is not whole or a mixture.
    int fileIsFrom() const {
        DiskStateFile file(path());
        const StateFile::Content content = file.read();
        if (std::holds_alternative<StateFile::Absent>(content)) {
            return 0;
        }
        const auto* const bytes = std::get_if<QByteArray>(&content);
        const auto backup = bytes != nullptr ? decodeBackup(*bytes) : std::nullopt;
        if (!backup || backup->history.size() != itemsEach) {
            return -1;
        }
        const QString first = backup->history.begin()->text;
        for (const HistoryItem& item : backup->history) {
            if (item.text != first) {
                return -1;
            }
        }
        return first.section(QLatin1Char(' '), -1).toInt();
    }
    bool hasHalfWritten() const { return QFile::exists(path() + QStringLiteral(".new")); }
    QByteArray raw(const QString& ending = {}) const {
        QFile file(path() + ending);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void plant(const QByteArray& content) const {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }

 private:
    QTemporaryDir folder_;
    std::mt19937 random_{17};
};

TEST_F(Killed, AtTwoHundredMomentsTheFileIsTheLastOrTheNextWhole) {
    int last = 0;
    int inTheMiddle = 0;
    for (int round = 0; round < 200; ++round) {
        for (const QByteArray& line : writeAndKill(QStringLiteral("write"))) {
            last = std::max(last, line.toInt());
        }
        inTheMiddle += static_cast<int>(hasHalfWritten());
        const int found = fileIsFrom();
        ASSERT_TRUE(found == last || found == last + 1) << "round " << round << ": the file is from " << found
                                                        << ", the last write that ended is " << last;
        last = found;
    }
    EXPECT_GT(inTheMiddle, 20) << "too few writes were killed in their middle for this to say something";
    RecordProperty("killed in the middle", inTheMiddle);
    std::printf("%d of 200 were killed in the middle of a write, the last file is from write %d\n",
                inTheMiddle, last);
}

TEST_F(Killed, WhileABadFileIsSetAsideNeitherItNorTheNewOneIsLost) {
    const QByteArray bad(300'000, 'b');
    int before = 0;
    for (int round = 0; round < 60; ++round) {
        QFile::remove(path() + QStringLiteral(".unreadable"));
        plant(bad);
        (void)writeAndKill(QStringLiteral("set-aside"));
        const bool isBad = raw() == bad;
        before += static_cast<int>(isBad);
        ASSERT_TRUE(isBad || (fileIsFrom() > 0 && raw(QStringLiteral(".unreadable")) == bad))
            << "round " << round;
    }
    EXPECT_GT(before, 0);
    EXPECT_LT(before, 60);
}

} // namespace

} // namespace lorvane
