// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/DiagnosticLog.h"

#include "base/testing/VirtualClock.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace lorvane;

namespace {

constexpr qint64 limit = 2'097'152;

class Log : public ::testing::Test {
 protected:
    [[nodiscard]] QString path() const { return folder.filePath("Logs/Tirra/tirra.log"); }
    [[nodiscard]] QByteArray content() const {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(absent)");
    }
    void fill(qint64 size) const {
        QDir().mkpath(folder.filePath("Logs/Tirra"));
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(static_cast<qsizetype>(size), 'x'));
    }
    QTemporaryDir folder;
    VirtualClock clock;
};

TEST_F(Log, TheFirstLineMakesTheFileAndIsAllOfIt) {
    DiagnosticLog log(clock, folder.path(), [](const QString&) {});
    log.diagLog("[tirra-dictate] first");
    log.drain();
    EXPECT_EQ(content(), "2026-01-05 10:00:00.000 [tirra-dictate] first\n");
    EXPECT_EQ(log.filePath(), path());
}

TEST_F(Log, TheStampIsTheTimeOfTheCall) {
    DiagnosticLog log(clock, folder.path(), [](const QString&) {});
    clock.advance(seconds(1.2345));
    log.diagLog("a");
    clock.jump(seconds(60));
    log.diagLog("b");
    log.drain();
    EXPECT_EQ(content(), "2026-01-05 10:00:01.234 a\n2026-01-05 10:01:01.234 b\n");
}

TEST_F(Log, LinesAreAppendedAcrossStarts) {
    for (const char* line : {"one", "two"}) {
        DiagnosticLog log(clock, folder.path(), [](const QString&) {});
        log.diagLog(line);
    }
    EXPECT_EQ(content(), "2026-01-05 10:00:00.000 one\n2026-01-05 10:00:00.000 two\n");
}

TEST_F(Log, AFileOfExactlyTheLimitIsNotWipedAndTheNextLineWipes) {
    fill(limit);
    DiagnosticLog log(clock, folder.path(), [](const QString&) {});
    log.diagLog("over");
    log.drain();
    EXPECT_EQ(content().size(), limit + 29);
    EXPECT_TRUE(content().endsWith("x2026-01-05 10:00:00.000 over\n"));
    log.diagLog("alone");
    log.drain();
    EXPECT_EQ(content(), "2026-01-05 10:00:00.000 alone\n");
}

TEST_F(Log, OneByteOverTheLimitIsWiped) {
    fill(limit + 1);
    DiagnosticLog log(clock, folder.path(), [](const QString&) {});
    log.diagLog("alone");
    log.drain();
    EXPECT_EQ(content(), "2026-01-05 10:00:00.000 alone\n");
    EXPECT_EQ(QDir(folder.filePath("Logs/Tirra")).entryList(QDir::Files).size(), 1);
}

TEST_F(Log, PercentSignsAndLineFeedsStandAsTheyAre) {
    QStringList seen;
    DiagnosticLog log(clock, folder.path(), [&](const QString& line) { seen.append(line); });
    const QString message = QString::fromUtf8("100 %d %@ %n %s\nsecond \u00e9\U0001F600");
    log.diagLog(message);
    log.drain();
    EXPECT_EQ(seen, QStringList{message});
    EXPECT_EQ(content(), "2026-01-05 10:00:00.000 " + message.toUtf8() + "\n");
}

TEST_F(Log, WithoutAFolderOnlyTheConsoleIsTold) {
    QStringList seen;
    DiagnosticLog log(clock, std::nullopt, [&](const QString& line) { seen.append(line); });
    log.diagLog("a");
    log.drain();
    EXPECT_EQ(seen, QStringList{"a"});
    EXPECT_TRUE(log.filePath().isEmpty());
}

TEST_F(Log, AConsoleLineNeverReachesTheFile) {
    QStringList seen;
    DiagnosticLog log(clock, folder.path(), [&](const QString& line) { seen.append(line); });
    log.consoleLog("[tirra-mic] x");
    log.drain();
    EXPECT_EQ(seen, QStringList{"[tirra-mic] x"});
    EXPECT_EQ(content(), "(absent)");
}

TEST_F(Log, AFolderThatCannotBeMadeCostsOnlyTheFile) {
    QFile blocker(folder.filePath("Logs"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    QStringList seen;
    DiagnosticLog log(clock, folder.path(), [&](const QString& line) { seen.append(line); });
    log.diagLog("a");
    log.drain();
    EXPECT_EQ(seen, QStringList{"a"});
    EXPECT_EQ(content(), "(absent)");
}

TEST_F(Log, AFolderRemovedMeanwhileCostsOnlyTheLinesUntilItIsBack) {
    DiagnosticLog log(clock, folder.path(), [](const QString&) {});
    ASSERT_TRUE(QDir(folder.filePath("Logs")).removeRecursively());
    log.diagLog("lost");
    log.drain();
    ASSERT_TRUE(QDir().mkpath(folder.filePath("Logs/Tirra")));
    log.diagLog("kept");
    log.drain();
    EXPECT_EQ(content(), "2026-01-05 10:00:00.000 kept\n");
}

TEST_F(Log, APipeInPlaceOfTheFileHoldsNothingUp) {
    ASSERT_TRUE(QDir().mkpath(folder.filePath("Logs/Tirra")));
    ASSERT_EQ(::mkfifo(qPrintable(path()), 0600), 0);
    DiagnosticLog log(clock, folder.path(), [](const QString&) {});
    log.diagLog(QString(100'000, u'x')); // more than a pipe holds
    log.drain();
}

[[noreturn]] void logToAConsoleThatIsGone(const Clock& clock, const QString& folder) {
    std::array<int, 2> ends{};
    const bool isGone = ::pipe(ends.data()) == 0 && ::close(ends[0]) == 0 && ::dup2(ends[1], 2) == 2;
    DiagnosticLog log(clock, folder);
    log.diagLog("first");
    log.diagLog("second");
    log.drain();
    std::_Exit(isGone ? 7 : 8);
}

TEST_F(Log, AConsoleThatIsGoneEndsNothing) {
    EXPECT_EXIT(logToAConsoleThatIsGone(clock, folder.path()), ::testing::ExitedWithCode(7), "");
    EXPECT_EQ(content(), "2026-01-05 10:00:00.000 first\n2026-01-05 10:00:00.000 second\n");
}

TEST_F(Log, EightThreadsAtOnceNeverMixTheirLinesAndKeepTheirOrder) {
    constexpr int threads = 8;
    constexpr int each = 500;
    DiagnosticLog log(clock, folder.path(), [](const QString&) {});
    std::vector<std::thread> writers;
    for (int id = 0; id < threads; ++id) {
        writers.emplace_back([&log, id] {
            for (int i = 0; i < each; ++i) {
                log.diagLog(QStringLiteral("t%1 n%2 ").arg(id).arg(i) + QString(80, QChar('a' + id)));
            }
        });
    }
    for (auto& writer : writers) {
        writer.join();
    }
    log.drain();
    const QRegularExpression form("^2026-01-05 10:00:00.000 t(\\d) n(\\d+) (.)\\3{79}$");
    std::vector<int> next(threads, 0);
    const QStringList lines = QString::fromUtf8(content()).split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), threads * each);
    for (const QString& line : lines) {
        const auto match = form.match(line);
        ASSERT_TRUE(match.hasMatch()) << line.toStdString();
        EXPECT_EQ(match.captured(2).toInt(), next[match.captured(1).toUInt()]++);
    }
}

} // namespace
