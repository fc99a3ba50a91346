// SPDX-License-Identifier: GPL-3.0-or-later
// What the pill costs: memory and processor time over 60 s at rest, and while the wave runs on a voice. By
// turns of the kernel's own count, for all threads. Reference: a program of the same toolkit that shows
// nothing, in the same run.
//   pill_bench [SECONDS]
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

using Time = std::chrono::steady_clock;

/// Nanoseconds on a processor so far, of every thread.
qint64 processorTime(qint64 pid) {
    qint64 sum = 0;
    const QString tasks = QStringLiteral("/proc/%1/task").arg(pid);
    for (const QString& task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file(tasks + '/' + task + QStringLiteral("/schedstat"));
        if (file.open(QIODevice::ReadOnly)) {
            sum += file.readAll().split(' ').value(0).toLongLong();
        }
    }
    return sum;
}

/// A line of the kernel's report in MB.
double megabytes(qint64 pid, const char* line) {
    QFile file(QStringLiteral("/proc/%1/status").arg(pid));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QRegularExpression pattern(QStringLiteral("%1:\\s+(\\d+) kB").arg(QLatin1String(line)));
    return pattern.match(QString::fromLatin1(file.readAll())).captured(1).toDouble() / 1024;
}

class Subject {
 public:
    Subject(const char* program, const QStringList& arguments, const QProcessEnvironment& environment) {
        process_.setProcessEnvironment(environment);
        process_.setProcessChannelMode(QProcess::MergedChannels);
        process_.start(QString::fromLocal8Bit(program), arguments);
        if (!process_.waitForStarted()) {
            std::fprintf(stderr, "pill_bench: %s does not start\n", program);
            std::exit(1);
        }
    }
    ~Subject() {
        process_.terminate();
        process_.waitForFinished();
    }
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    void tell(const QByteArray& line) {
        process_.write(line + '\n');
        process_.waitForBytesWritten();
    }
    void begin() {
        before_ = processorTime(process_.processId());
        since_ = Time::now();
    }
    /// Of one core, in percent.
    double share() const {
        const double passed = std::chrono::duration<double, std::nano>(Time::now() - since_).count();
        return 100 * static_cast<double>(processorTime(process_.processId()) - before_) / passed;
    }
    void print(const char* what) const {
        std::printf("%s: %.1f MB resident (%.1f MB its own), %.3f %% of a core\n", what,
                    megabytes(process_.processId(), "VmRSS"), megabytes(process_.processId(), "RssAnon"),
                    share());
    }

 private:
    QProcess process_;
    qint64 before_ = 0;
    Time::time_point since_;
};

/// A user's folders, with the first run behind them: no window is open then.
QProcessEnvironment settledUser(const QString& home) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* const folder : {"CONFIG", "DATA", "STATE", "CACHE"}) {
        environment.insert(QStringLiteral("XDG_%1_HOME").arg(QLatin1String(folder)),
                           home + '/' + QLatin1String(folder));
    }
    QDir(home).mkpath(QStringLiteral("CONFIG/Tirra"));
    QFile preferences(home + QStringLiteral("/CONFIG/Tirra/preferences.json"));
    if (preferences.open(QIODevice::WriteOnly)) {
        preferences.write(R"({"tirra.mac.onboarded": true, "tirra.linux.trayMissingTold": true})");
    }
    return environment;
}

void pass(double seconds) { std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); }

/// A level that goes up and down as in speech, told as often as the recorder tells it.
void speak(Subject& pill, double seconds) {
    constexpr double period = 0.05;
    for (double time = 0; time < seconds; time += period) {
        pill.tell("level " +
                  QByteArray::number(std::abs(std::sin(time * 3)) * std::abs(std::sin(time * 17))));
        pass(period);
    }
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const double seconds = argc > 1 ? std::atof(argv[1]) : 60;
    const QTemporaryDir home;
    const QProcessEnvironment environment = settledUser(home.path());
    Subject bare(PILL_STAGE, {QStringLiteral("--bare")}, environment);
    Subject pill(PILL_STAGE, {}, environment);
    Subject program(LORVANE_PROGRAM, {}, environment);
    constexpr double settling = 5;
    pass(settling);
    for (Subject* const subject : {&bare, &pill, &program}) {
        subject->begin();
    }
    pass(seconds);
    std::printf("at rest, over %.0f s\n", seconds);
    bare.print("  a program that shows nothing");
    pill.print("  the pill alone");
    program.print("  lorvane");
    pill.tell("phase recording");
    pass(1);
    pill.begin();
    speak(pill, 20);
    pill.print("recording, the pill alone");
    return 0;
}
