// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ProcessTree.h"

#include "support/Wait.h"

#include <algorithm>
#include <csignal>
#include <optional>

#include <unistd.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QMultiHash>

namespace lorvane::processes {

namespace {

struct Status {
    char state;
    qint64 parent;
    double processor; // seconds
};

std::optional<Status> statusOf(qint64 pid) {
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray text = file.readAll();
    // The name stands in parentheses and may hold anything.
    const auto fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13)
        return std::nullopt;
    const double ticks = fields[11].toDouble() + fields[12].toDouble();
    return Status{fields[0].at(0), fields[1].toLongLong(), ticks / static_cast<double>(sysconf(_SC_CLK_TCK))};
}

} // namespace

QList<qint64> family(qint64 root) {
    QMultiHash<qint64, qint64> children;
    for (const auto& name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        const qint64 pid = name.toLongLong();
        if (const auto status = pid == 0 ? std::nullopt : statusOf(pid))
            children.insert(status->parent, pid);
    }
    QList<qint64> found;
    if (isRunning(root))
        found.append(root);
    for (qsizetype at = 0; at < found.size(); ++at)
        found.append(children.values(found[at]));
    return found;
}

bool isRunning(qint64 pid) {
    const auto status = pid == 0 ? std::nullopt : statusOf(pid);
    return status && status->state != 'Z' && status->state != 'X';
}

double processorSeconds(qint64 pid) {
    const auto status = statusOf(pid);
    return status ? status->processor : 0;
}

void end(const QList<qint64>& pids) {
    for (const qint64 pid : pids)
        ::kill(static_cast<pid_t>(pid), SIGKILL);
    (void)waitUntil([&] { return std::none_of(pids.begin(), pids.end(), isRunning); });
}

} // namespace lorvane::processes
