// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/DiskStateFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lorvane {

namespace {

// Twenty times what a heavy user has after ten years; reading more would only take the memory.
constexpr qsizetype largestFile = qsizetype(1) << 30;
constexpr qsizetype roomBehind = 64;
constexpr mode_t ownersFile = 0600;

class Descriptor {
 public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int get() const { return number_; }
    [[nodiscard]] bool isOpen() const { return number_ >= 0; }
    [[nodiscard]] std::optional<struct stat> about() const {
        struct stat found = {};
        return ::fstat(number_, &found) == 0 ? std::optional(found) : std::nullopt;
    }
    bool close() {
        const int number = std::exchange(number_, -1);
        return number < 0 || ::close(number) == 0;
    }

 private:
    int number_;
};

std::optional<struct stat> aboutPath(const QByteArray& path) {
    struct stat found = {};
    return ::lstat(path.constData(), &found) == 0 ? std::optional(found) : std::nullopt;
}

bool isSame(const std::optional<struct stat>& one, const std::optional<struct stat>& other) {
    return one && other && one->st_dev == other->st_dev && one->st_ino == other->st_ino;
}

bool readAll(int file, QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t got = ::read(file, bytes.data() + done, static_cast<std::size_t>(bytes.size() - done));
        if (got > 0) {
            done += got;
        } else if (got == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool writeAll(int file, const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t put =
            ::write(file, bytes.constData() + done, static_cast<std::size_t>(bytes.size() - done));
        if (put >= 0) {
            done += put;
        } else if (errno != EINTR) {
            return false;
        }
    }
    return ::fsync(file) == 0;
}

/// Whether `file` is the one at `path` and nobody else writes it. One that was renamed between its opening
/// and the lock is the other program's finished file.
bool isOurs(const Descriptor& file, const QByteArray& path) {
    const bool locked = ::flock(file.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    const auto about = file.about();
    return locked && about && S_ISREG(about->st_mode) && isSame(about, aboutPath(path));
}

void syncFolderOf(const QByteArray& path) {
    const QByteArray folder = path.left(path.lastIndexOf('/') + 1);
    const Descriptor opened(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen()) {
        ::fsync(opened.get());
    }
}

/// A second name first, so that there is something at the path all the while; a rename for what can have
/// none.
bool moveTo(const QByteArray& path, const QByteArray& aside) {
    return ::link(path.constData(), aside.constData()) == 0 ||
           (errno != EEXIST &&
            ::renameat2(AT_FDCWD, path.constData(), AT_FDCWD, aside.constData(), RENAME_NOREPLACE) == 0);
}

bool setAside(const QByteArray& path) {
    const auto old = aboutPath(path);
    if (!old) {
        return errno == ENOENT;
    }
    const QByteArray wanted = path + ".unreadable";
    QByteArray aside = wanted;
    for (int number = 2; !moveTo(path, aside); ++number) {
        const auto there = aboutPath(aside);
        if (!there) {
            return false;
        }
        if (isSame(old, there)) {
            return true; // from a write that went no further
        }
        aside = wanted + '-' + QByteArray::number(number);
    }
    return true;
}

} // namespace

DiskStateFile::DiskStateFile(const QString& path) : path_(path) {
    const QString folder = QFileInfo(path_).path();
    if (QDir().mkpath(folder)) {
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
}

QByteArray DiskStateFile::target() const {
    const QFileInfo followed(QFileInfo(path_).canonicalFilePath());
    return QFile::encodeName(followed.isFile() ? followed.filePath() : path_);
}

StateFile::Content DiskStateFile::read() {
    // Not blocking: a pipe without a writer would hold up the start for ever.
    const Descriptor file(::open(QFile::encodeName(path_).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen()) {
        if (errno == ENOENT) {
            return Absent();
        }
        return Unreadable();
    }
    const auto about = file.about();
    if (!about || !S_ISREG(about->st_mode) || about->st_size > largestFile) {
        return Unreadable();
    }
    QByteArray bytes;
    bytes.reserve(about->st_size + roomBehind);
    bytes.resize(about->st_size);
    if (!readAll(file.get(), bytes)) {
        return Unreadable();
    }
    return bytes;
}

bool DiskStateFile::replace(const QByteArray& bytes, Predecessor predecessor) {
    const QByteArray path = target();
    const QByteArray next = path + ".new";
    Descriptor file(
        ::open(next.constData(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, ownersFile));
    if (!file.isOpen() || !isOurs(file, next)) {
        return false;
    }
    const bool written = ::ftruncate(file.get(), 0) == 0 && ::fchmod(file.get(), ownersFile) == 0 &&
                         writeAll(file.get(), bytes) &&
                         (predecessor == Predecessor::overwritten || setAside(path)) &&
                         ::rename(next.constData(), path.constData()) == 0;
    if (!written) {
        ::unlink(next.constData());
        return false;
    }
    syncFolderOf(path);
    return true;
}

} // namespace lorvane
