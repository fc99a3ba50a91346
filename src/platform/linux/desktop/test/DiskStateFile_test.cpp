// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/DiskStateFile.h"

#include "base/testing/VirtualClock.h"
#include "history/MacHistoryStore.h"
#include "history/testing/StateFileContract.h"
#include "support/Wait.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/fsuid.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lorvane {

namespace {

const QString name = QStringLiteral("tirra-history.json");

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

void plant(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size())
        << path.toStdString();
}

mode_t modeOf(const QString& path) {
    struct stat found = {};
    return ::stat(QFile::encodeName(path).constData(), &found) == 0 ? found.st_mode & 0777 : 0;
}

class DiskWorld {
 public:
    StateFile& file() { return file_; }
    StateFile& again() { return file_ = DiskStateFile(path()); }
    std::vector<QByteArray> setAside() const {
        std::vector<QByteArray> contents;
        for (const QString& entry : entries()) {
            if (entry.startsWith(name + QStringLiteral(".unreadable"))) {
                contents.push_back(contentOf(folder() + entry));
            }
        }
        return contents;
    }
    QString folder() const { return home_.filePath(QStringLiteral("data/Tirra/")); }
    QString path() const { return folder() + name; }
    QStringList entries() const {
        return QDir(folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                        QDir::Name);
    }
    QString home() const { return home_.path(); }

 private:
    QTemporaryDir home_;
    DiskStateFile file_{path()};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Disk, StateFileContract, DiskWorld);

class OnDisk : public ::testing::Test {
 protected:
    bool replace(const QByteArray& bytes,
                 StateFile::Predecessor predecessor = StateFile::Predecessor::overwritten) {
        return world.file().replace(bytes, predecessor);
    }
    bool isUnreadable() { return std::holds_alternative<StateFile::Unreadable>(world.file().read()); }

    DiskWorld world;
};

TEST_F(OnDisk, IsForItsOwnerAlone) {
    EXPECT_EQ(modeOf(world.folder()), 0700U);
    ASSERT_TRUE(replace("content"));
    EXPECT_EQ(modeOf(world.path()), 0600U);
}

TEST_F(OnDisk, AWriteLeavesNothingElseInTheFolder) {
    ASSERT_TRUE(replace("first"));
    ASSERT_TRUE(replace("second"));
    EXPECT_EQ(world.entries(), QStringList{name});
}

TEST_F(OnDisk, HasRoomBehindItsBytes) {
    for (const int size : {0, 1, 4'095, 4'096, 100'000}) {
        ASSERT_TRUE(replace(QByteArray(size, 'x')));
        const auto bytes = std::get<QByteArray>(world.file().read());
        EXPECT_GE(bytes.capacity(), size + decodingRoom);
    }
}

TEST_F(OnDisk, WhatAKilledProgramLeftIsWrittenOver) {
    ASSERT_TRUE(replace("old"));
    plant(world.path() + QStringLiteral(".new"), QByteArray(5'000, 'h'));
    ASSERT_TRUE(replace("new"));
    EXPECT_EQ(contentOf(world.path()), "new");
    EXPECT_EQ(world.entries(), QStringList{name});
}

TEST_F(OnDisk, TwoProgramsNeverWriteTheSameFile) {
    ASSERT_TRUE(replace("old"));
    const QString next = world.path() + QStringLiteral(".new");
    plant(next, "half of the other's");
    const int other = ::open(QFile::encodeName(next).constData(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(other, LOCK_EX), 0);
    EXPECT_FALSE(replace("ours"));
    EXPECT_EQ(contentOf(next), "half of the other's");
    EXPECT_EQ(contentOf(world.path()), "old");
    ::close(other);
    EXPECT_TRUE(replace("ours"));
    EXPECT_EQ(contentOf(world.path()), "ours");
}

TEST_F(OnDisk, ALinkToAFileStaysAndTheFileIsReplaced) {
    QDir().mkpath(world.home() + QStringLiteral("/synced"));
    const QString real = world.home() + QStringLiteral("/synced/history");
    plant(real, "old");
    ASSERT_TRUE(QFile::link(real, world.path()));
    EXPECT_EQ(std::get<QByteArray>(world.file().read()), "old");
    ASSERT_TRUE(replace("new"));
    EXPECT_EQ(contentOf(real), "new");
    EXPECT_EQ(QFile::symLinkTarget(world.path()), real);
}

TEST_F(OnDisk, ALinkToNothingOrToADeviceIsNotFollowed) {
    for (const char* const target : {"/nowhere/at/all", "/dev/zero", "tirra-history.json"}) {
        ::unlink(QFile::encodeName(world.path()).constData());
        ASSERT_EQ(::symlink(target, QFile::encodeName(world.path()).constData()), 0);
        EXPECT_FALSE(std::holds_alternative<QByteArray>(world.file().read()));
        ASSERT_TRUE(replace("new", StateFile::Predecessor::setAside));
        EXPECT_EQ(contentOf(world.path()), "new");
        EXPECT_TRUE(QFileInfo(world.path()).isFile() && !QFileInfo(world.path()).isSymLink());
    }
    EXPECT_FALSE(QFile::exists(QStringLiteral("/dev/zero.new")));
}

TEST_F(OnDisk, APipeIsUnreadableAtOnceAndSetAside) {
    ASSERT_EQ(::mkfifo(QFile::encodeName(world.path()).constData(), 0600), 0);
    EXPECT_TRUE(isUnreadable());
    ASSERT_TRUE(replace("new", StateFile::Predecessor::setAside));
    EXPECT_EQ(contentOf(world.path()), "new");
    EXPECT_TRUE(world.entries().contains(name + QStringLiteral(".unreadable")));
}

TEST_F(OnDisk, AFolderIsUnreadableAndSetAsideWithWhatIsInIt) {
    ASSERT_TRUE(QDir().mkpath(world.path() + QStringLiteral("/kept")));
    EXPECT_TRUE(isUnreadable());
    EXPECT_FALSE(replace("new"));
    ASSERT_TRUE(replace("new", StateFile::Predecessor::setAside));
    EXPECT_EQ(contentOf(world.path()), "new");
    EXPECT_TRUE(QFileInfo(world.path() + QStringLiteral(".unreadable/kept")).isDir());
}

TEST_F(OnDisk, AFileOfAbsurdSizeIsUnreadable) {
    plant(world.path(), {});
    ASSERT_EQ(::truncate(QFile::encodeName(world.path()).constData(), 1LL << 40), 0)
        << "no sparse files here";
    EXPECT_TRUE(isUnreadable());
}

TEST_F(OnDisk, WhatWasSetAsideByAWriteThatWentNoFurtherIsNotSetAsideTwice) {
    plant(world.path(), "bad");
    ASSERT_EQ(::link(QFile::encodeName(world.path()).constData(),
                     QFile::encodeName(world.path() + QStringLiteral(".unreadable")).constData()),
              0);
    ASSERT_TRUE(replace("new", StateFile::Predecessor::setAside));
    EXPECT_EQ(world.setAside(), std::vector{QByteArray("bad")});
}

/// Writes no file beyond a size, as a full disk or a quota does.
class SizeLimit {
 public:
    explicit SizeLimit(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limit = before_;
        limit.rlim_cur = bytes;
        limited_ = ::setrlimit(RLIMIT_FSIZE, &limit) == 0;
    }
    ~SizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, signalBefore_);
    }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;
    bool isOn() const { return limited_; }

 private:
    void (*signalBefore_)(int) = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before_ = {};
    bool limited_ = false;
};

TEST_F(OnDisk, WhereAWriteEndsInItsMiddleTheOldFileStaysAndTheNextWriteSucceeds) {
    const QByteArray old(50'000, 'o');
    ASSERT_TRUE(replace(old));
    {
        const SizeLimit limit(100'000);
        ASSERT_TRUE(limit.isOn());
        EXPECT_FALSE(replace(QByteArray(200'000, 'n')));
        EXPECT_FALSE(replace(QByteArray(200'000, 'n'), StateFile::Predecessor::setAside));
        EXPECT_TRUE(contentOf(world.path()) == old);
        EXPECT_EQ(world.entries(), QStringList{name}) << "the rest of a failed write takes room";
        EXPECT_TRUE(replace("small"));
    }
    EXPECT_EQ(contentOf(world.path()), "small");
    EXPECT_TRUE(replace(QByteArray(200'000, 'n')));
}

TEST_F(OnDisk, OnAFullDiskTheOldFileStaysAndTheNextWriteSucceeds) {
    const ToolResult result =
        runTool(QStringLiteral(HISTORY_WRITER), {QStringLiteral("full"), world.folder()});
    constexpr int cannotMount = 77;
    if (result.status == cannotMount) {
        GTEST_SKIP()
            << "no file system of a fixed size can be mounted here; the limit on the size of files alone was "
               "tried. "
            << result.errors.constData();
    }
    EXPECT_EQ(result.status, 0) << result.errors.constData();
}

/// Lets this thread act as a user whom permissions bind, also when the suite runs as root.
class AsNobody {
 public:
    AsNobody() {
        if (::geteuid() == 0) {
            ::setfsuid(65534);
        }
    }
    ~AsNobody() { ::setfsuid(::geteuid()); }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;
};

TEST_F(OnDisk, InAReadOnlyFolderTheOldFileStaysAndTheNextWriteSucceeds) {
    ASSERT_TRUE(replace("old"));
    const QByteArray folder = QFile::encodeName(world.folder());
    QFile::setPermissions(world.home(), QFile::Permissions(0x7755));
    QFile::setPermissions(world.home() + QStringLiteral("/data"), QFile::Permissions(0x7755));
    ASSERT_EQ(::chmod(folder.constData(), 0555), 0);
    {
        const AsNobody nobody;
        EXPECT_FALSE(replace("new"));
        EXPECT_FALSE(replace("new", StateFile::Predecessor::setAside));
    }
    EXPECT_EQ(contentOf(world.path()), "old");
    EXPECT_EQ(world.entries(), QStringList{name});
    ASSERT_EQ(::chmod(folder.constData(), 0700), 0);
    EXPECT_TRUE(replace("new"));
}

TEST_F(OnDisk, AFileThatMayNotBeReadIsUnreadable) {
    ASSERT_TRUE(replace("old"));
    QFile::setPermissions(world.home(), QFile::Permissions(0x7755));
    QFile::setPermissions(world.home() + QStringLiteral("/data"), QFile::Permissions(0x7755));
    ASSERT_EQ(::chmod(QFile::encodeName(world.folder()).constData(), 0755), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(world.path()).constData(), 0), 0);
    const AsNobody nobody;
    EXPECT_TRUE(isUnreadable());
}

/// The store on a real disk.
class StoreOnDisk : public ::testing::Test {
 protected:
    void start() {
        store.reset();
        store = std::make_unique<MacHistoryStore>(clock, file);
    }
    void add() {
        HistoryItem item;
        item.id = QUuid::createUuid();
        store->add(item);
        clock.advance(std::chrono::milliseconds(250));
    }
    std::size_t itemsOnDisk() {
        start();
        return store->items().size();
    }

    DiskWorld world;
    DiskStateFile file{world.path()};
    VirtualClock clock;
    std::unique_ptr<MacHistoryStore> store;
};

TEST_F(StoreOnDisk, KeepsItsItemsFromStartToStart) {
    start();
    for (std::size_t count = 1; count <= 3; ++count) {
        add();
        EXPECT_EQ(itemsOnDisk(), count);
    }
}

TEST_F(StoreOnDisk, WhateverStandsInItsPlaceItStartsEmptyAndTheFirstChangeSetsThatAside) {
    const QByteArray path = QFile::encodeName(world.path());
    const QByteArray whole = *encodeBackup({});
    const std::vector<std::function<void()>> hostile{
        [&] { plant(world.path(), {}); },
        [&] { plant(world.path(), whole.chopped(1)); },
        [&] { plant(world.path(), QByteArray(1'000'000, '[')); },
        [&] {
            plant(world.path(),
                  QByteArray(whole).replace("\"history\":[]", "\"history\":[{\"text\":\"\xff\"}]"));
        },
        [&] { plant(world.path(), QByteArray(whole).replace("\"exportedAt\":0", "\"exportedAt\":1e999")); },
        [&] { ASSERT_EQ(::mkfifo(path.constData(), 0600), 0); },
        [&] { ASSERT_EQ(::mkdir(path.constData(), 0700), 0); },
    };
    for (std::size_t which = 0; which < hostile.size(); ++which) {
        ::unlink(path.constData());
        hostile[which]();
        start();
        EXPECT_TRUE(store->items().isEmpty()) << which;
        EXPECT_EQ(store->revision(), 0) << which;
        add();
        add();
        EXPECT_EQ(itemsOnDisk(), 2U) << which;
        const auto aside = world.entries().filter(QStringLiteral(".unreadable"));
        EXPECT_EQ(static_cast<std::size_t>(aside.size()), which + 1)
            << aside.join(QLatin1Char(' ')).toStdString();
    }
}

TEST_F(StoreOnDisk, WithoutItsFolderNothingFailsAndTheNextChangeTriesAgain) {
    ASSERT_TRUE(QDir(world.folder()).removeRecursively());
    plant(world.folder().chopped(1), "in the way");
    start();
    add();
    EXPECT_EQ(itemsOnDisk(), 0U);
    ASSERT_TRUE(QFile::remove(world.folder().chopped(1)) && QDir().mkpath(world.folder()));
    add();
    EXPECT_EQ(itemsOnDisk(), 1U);
}

} // namespace

} // namespace lorvane
