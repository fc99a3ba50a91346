// SPDX-License-Identifier: GPL-3.0-or-later
#include "DictationDesk.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <iostream>

namespace lorvane {

namespace {

using std::chrono::milliseconds;

constexpr int warmUp = 50;
constexpr int allTakes = 200;
constexpr qint64 mostGrowth = 4096; // kB
constexpr int mostNewDescriptors = 2;

struct Holdings {
    qint64 memory = 0; // kB that are in memory and belong to no file
    int descriptors = 0;
};

qint64 anonymousMemory(qint64 pid) {
    QFile file(QStringLiteral("/proc/%1/status").arg(pid));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    static const QRegularExpression line(QStringLiteral("RssAnon:\\s+(\\d+) kB"));
    return line.match(QString::fromLatin1(file.readAll())).captured(1).toLongLong();
}

int descriptors(qint64 pid) {
    const QDir folder(QStringLiteral("/proc/%1/fd").arg(pid));
    return static_cast<int>(folder.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
}

class Endurance : public DictationDesk {
 protected:
    /// One take by the hold key, until its text has landed; the program may be showing it still.
    ::testing::AssertionResult dictate(int number) {
        program->forgetPhases();
        // A machine with other work to do may tell of the press late: the hold is counted from then on.
        hand.press(holdKey);
        const bool heard = waitUntil([&] { return program->phases().contains(QStringLiteral("recording")); });
        stay(milliseconds(450));
        hand.release(holdKey);
        if (!heard) {
            return ::testing::AssertionFailure() << "take " << number << " did not begin";
        }
        const bool landed = waitUntil([&] { return program->phases().contains(QStringLiteral("done")); });
        return landed ? ::testing::AssertionSuccess()
                      : ::testing::AssertionFailure()
                            << "take " << number << " went through "
                            << program->phases().join(QStringLiteral(", ")).toStdString() << "\n"
                            << program->log().toStdString();
    }
    /// At rest, with the last clipboard given back.
    [[nodiscard]] Holdings holdings(int takesSoFar) const {
        EXPECT_TRUE(program->waitForPhase(QStringLiteral("idle")));
        stay(std::chrono::seconds(3));
        const Holdings now{anonymousMemory(program->pid()), descriptors(program->pid())};
        std::cout << "after " << takesSoFar << " takes: " << now.memory << " kB, " << now.descriptors
                  << " descriptors\n";
        return now;
    }
};

TEST_F(Endurance, TwoHundredTakesLeaveNeitherMemoryNorDescriptorsBehind) {
    const auto editor = DesktopApp::mousepad();
    startHearing(QStringLiteral("x"));
    Holdings warm;
    for (int number = 1; number <= allTakes; ++number) {
        ASSERT_TRUE(dictate(number));
        if (number == warmUp) {
            warm = holdings(number);
        }
    }
    const Holdings last = holdings(allTakes);
    EXPECT_LE(last.memory - warm.memory, mostGrowth);
    EXPECT_LE(last.descriptors - warm.descriptors, mostNewDescriptors);
    EXPECT_EQ(takes().size(), static_cast<std::size_t>(allTakes));
    const QString wanted = QStringLiteral("x").repeated(allTakes);
    EXPECT_EQ(editor->waitForText(wanted), wanted);
}

} // namespace

} // namespace lorvane
