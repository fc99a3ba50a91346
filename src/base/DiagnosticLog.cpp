// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/DiagnosticLog.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <cstdio>
#include <ctime>

namespace lorvane {

namespace {

constexpr qint64 sizeLimit = 2'097'152;

/// A terminal or a pipe that is gone must not end the program: while this lives, this thread's writes to it
/// fail in silence.
class QuietPipe {
 public:
    QuietPipe() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~QuietPipe() {
        if (sigismember(&before_, SIGPIPE) == 0) {
            const timespec atOnce{};
            sigtimedwait(&pipe_, nullptr, &atOnce);
            pthread_sigmask(SIG_SETMASK, &before_, nullptr);
        }
    }
    QuietPipe(const QuietPipe&) = delete;
    QuietPipe& operator=(const QuietPipe&) = delete;

 private:
    sigset_t pipe_ = {};
    sigset_t before_ = {};
};

void writeToStandardError(const QString& line) {
    const QByteArray bytes = line.toUtf8() + '\n';
    const QuietPipe quiet;
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
}

// Past the limit the whole file is wiped; there is no second file.
void appendLine(const QString& path, const QByteArray& line) {
    const QFileInfo about(path);
    // A pipe in its place would hold up the end of the program.
    const bool isFile = about.isFile() || !about.exists();
    QFile file(path);
    if (!isFile || !file.open(QIODevice::ReadWrite)) {
        return;
    }
    const qint64 size = file.size();
    if (file.seek(size) && size > sizeLimit) {
        file.resize(0);
        file.seek(0);
    }
    file.write(line);
}

QString stamp(WallTime time) {
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
    return QDateTime::fromMSecsSinceEpoch(milliseconds).toString(u"yyyy-MM-dd HH:mm:ss.zzz");
}

} // namespace

DiagnosticLog::DiagnosticLog(const Clock& clock, const std::optional<QString>& stateFolder, Console console)
    : clock_(clock), console_(console ? std::move(console) : writeToStandardError) {
    if (stateFolder) {
        const QDir folder(*stateFolder + QStringLiteral("/Logs/Tirra"));
        folder.mkpath(QStringLiteral("."));
        filePath_ = folder.filePath(QStringLiteral("tirra.log"));
    }
}

void DiagnosticLog::diagLog(const QString& message) {
    consoleLog(message);
    if (filePath_.isEmpty()) {
        return;
    }
    const QByteArray line = (stamp(clock_.wallNow()) + u' ' + message + u'\n').toUtf8();
    queue_.submit([path = filePath_, line] { appendLine(path, line); });
}

void DiagnosticLog::consoleLog(const QString& message) const { console_(message); }

} // namespace lorvane
