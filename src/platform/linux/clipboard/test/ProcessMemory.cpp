// SPDX-License-Identifier: GPL-3.0-or-later
#include "ProcessMemory.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <stdexcept>

namespace lorvane {

namespace {

qint64 parentOf(const QString& process) {
    QFile file("/proc/" + process + "/stat");
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QByteArray line = file.readAll();
    return line.mid(line.lastIndexOf(')') + 2).split(' ').value(1).toLongLong();
}

/// Programs start helpers that end at any time; what has ended holds nothing.
bool hasEnded(const QString& folder) {
    QFile file(folder + "stat");
    if (!file.open(QIODevice::ReadOnly)) {
        return true;
    }
    const QByteArray line = file.readAll();
    const auto state = line.mid(line.lastIndexOf(')') + 2, 1);
    return state.isEmpty() || state == "Z" || state == "X";
}

bool regionHolds(QFile& memory, quint64 first, quint64 last, const QList<QByteArray>& needles) {
    constexpr quint64 step = 4U << 20U;
    constexpr quint64 overlap = 4096;
    for (quint64 at = first; at < last; at += step) {
        if (!memory.seek(static_cast<qint64>(at))) {
            return false;
        }
        const QByteArray bytes = memory.read(static_cast<qint64>(std::min(step + overlap, last - at)));
        if (std::ranges::any_of(needles, [&](const auto& needle) { return bytes.contains(needle); })) {
            return true;
        }
    }
    return false;
}

bool processHolds(qint64 process, const QList<QByteArray>& needles) {
    const QString folder = QStringLiteral("/proc/%1/").arg(process);
    QFile maps(folder + "maps");
    QFile memory(folder + "mem");
    if (!maps.open(QIODevice::ReadOnly) || !memory.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        if (hasEnded(folder)) {
            return false;
        }
        throw std::runtime_error("the memory of " + folder.toStdString() + " cannot be read");
    }
    const auto lines = maps.readAll().split('\n');
    bool hasRead = false;
    for (const auto& line : lines) {
        const auto words = line.simplified().split(' ');
        if (words.size() < 2 || !words[1].startsWith("rw")) {
            continue;
        }
        const auto bounds = words[0].split('-');
        const auto first = bounds[0].toULongLong(nullptr, 16);
        hasRead = hasRead || (memory.seek(static_cast<qint64>(first)) && !memory.read(1).isEmpty());
        if (regionHolds(memory, first, bounds.value(1).toULongLong(nullptr, 16), needles)) {
            return true;
        }
    }
    if (!hasRead && !hasEnded(folder)) {
        throw std::runtime_error("nothing of the memory of " + folder.toStdString() + " could be read");
    }
    return false;
}

} // namespace

QList<qint64> withDescendants(qint64 process) {
    QList<qint64> family{process};
    const auto all = QDir("/proc").entryList(QDir::Dirs).filter(QRegularExpression("^[0-9]+$"));
    for (qsizetype known = 0; known != family.size();) {
        known = family.size();
        for (const auto& name : all) {
            if (!family.contains(name.toLongLong()) && family.contains(parentOf(name))) {
                family.append(name.toLongLong());
            }
        }
    }
    return family;
}

bool memoryHolds(const QList<qint64>& processes, const QString& text) {
    const QByteArray wide(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    return std::ranges::any_of(processes, [&](qint64 process) {
        return processHolds(process, {text.toUtf8(), wide});
    });
}

} // namespace lorvane
