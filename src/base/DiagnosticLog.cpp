// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/DiagnosticLog.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <cstdio>

namespace lorvane {

namespace {

constexpr qint64 sizeLimit = 2'097'152;

void writeToStandardError(const QString& line) {
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
}

// Past the limit the whole file is wiped; there is no second file.
void appendLine(const QString& path, const QByteArray& line) {
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite)) {
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
