// SPDX-License-Identifier: GPL-3.0-or-later
// history-writer write FILE ITEMS: writes one history after the other, each with the next number in all of
// its texts, and says the number after each; begins with the number after the file's. "0" comes when it
// begins. history-writer set-aside FILE ITEMS: the same over a file that is to be set aside. history-writer
// full FOLDER: mounts a small file system for itself alone at the folder, fills it, and looks at what is
// left; 77 when nothing can be mounted.
#include "history/Backup.h"
#include "platform/linux/desktop/DiskStateFile.h"

#include <QDir>
#include <QFile>

#include <cstdio>
#include <cstring>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace {

using namespace lorvane;
using Predecessor = StateFile::Predecessor;

Backup historyOf(int number, std::size_t count) {
    std::vector<HistoryItem> items(count);
    for (HistoryItem& item : items) {
        item.id = QUuid::createUuid();
        item.text = QStringLiteral("the same in all of them %1").arg(number);
        item.raw = QStringLiteral("so that a mixture of two files would be seen: ").repeated(4);
    }
    Backup backup;
    backup.history = HistoryList(std::move(items));
    return backup;
}

int numberIn(StateFile& file) {
    const StateFile::Content content = file.read();
    const auto* const bytes = std::get_if<QByteArray>(&content);
    const auto backup = bytes != nullptr ? decodeBackup(*bytes) : std::nullopt;
    return backup && !backup->history.isEmpty()
               ? backup->history.begin()->text.section(QLatin1Char(' '), -1).toInt()
               : 0;
}

int writeForEver(const QString& path, std::size_t count, Predecessor predecessor) {
    DiskStateFile file(path);
    int number = numberIn(file);
    std::puts("0");
    std::fflush(stdout);
    for (;;) {
        ++number;
        const auto bytes = encodeBackup(historyOf(number, count));
        if (!bytes || !file.replace(*bytes, predecessor)) {
            std::perror("a write failed");
            return 1;
        }
        predecessor = Predecessor::overwritten;
        std::printf("%d\n", number);
        std::fflush(stdout);
    }
}

bool writeLine(const char* path, const QByteArray& line) {
    QFile file(QString::fromLatin1(path));
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(line) == line.size();
}

/// As a user without rights, in a world where it has them.
bool becomeMounter() {
    const QByteArray user = QByteArray::number(::getuid());
    const QByteArray group = QByteArray::number(::getgid());
    if (::unshare(CLONE_NEWNS) == 0) {
        return true;
    }
    return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && writeLine("/proc/self/setgroups", "deny") &&
           writeLine("/proc/self/uid_map", "0 " + user + " 1") &&
           writeLine("/proc/self/gid_map", "0 " + group + " 1");
}

bool mountSmall(const char* folder) {
    return becomeMounter() && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("small", folder, "tmpfs", 0, "size=256k") == 0;
}

int expect(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "it does not hold: %s\n", what);
    }
    return holds ? 0 : 1;
}

int fill(const char* folder) {
    if (!mountSmall(folder)) {
        std::perror("mount");
        return 77;
    }
    const QDir small(QString::fromLocal8Bit(folder));
    DiskStateFile file(small.filePath(QStringLiteral("tirra-history.json")));
    const auto holds = [&](char letter, int size) {
        const StateFile::Content content = file.read();
        const auto* const bytes = std::get_if<QByteArray>(&content);
        return bytes != nullptr && *bytes == QByteArray(size, letter);
    };
    int failed = expect(file.replace(QByteArray(100'000, 'a'), Predecessor::overwritten), "there is room");
    failed += expect(!file.replace(QByteArray(400'000, 'b'), Predecessor::overwritten), "there is none");
    failed += expect(!file.replace(QByteArray(400'000, 'b'), Predecessor::setAside), "there is none again");
    failed += expect(holds('a', 100'000), "the old file is whole");
    failed += expect(small.entryList(QDir::Files | QDir::Hidden).size() == 1, "nothing else takes room");
    failed += expect(file.replace(QByteArray(80'000, 'c'), Predecessor::overwritten), "the next one fits");
    return failed + expect(holds('c', 80'000), "and is there");
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "full") == 0) {
        return fill(argv[2]);
    }
    if (argc != 4) {
        return 2;
    }
    const bool aside = std::strcmp(argv[1], "set-aside") == 0;
    return writeForEver(QString::fromLocal8Bit(argv[2]), QByteArray(argv[3]).toULongLong(),
                        aside ? Predecessor::setAside : Predecessor::overwritten);
}
