// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/DesktopEntries.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <filesystem>

namespace lorvane {

namespace {

class DesktopEntriesTest : public ::testing::Test {
 protected:
    void write(const QTemporaryDir& folder, const QString& id, const QByteArray& keys) {
        QFile file(folder.filePath(id + ".desktop"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("# a comment\n[Desktop Entry]\nType=Application\n" + keys);
    }
    QString find(const WindowTraits& traits) {
        const auto entry = entries.find(traits);
        return entry ? entry->id : QStringLiteral("none");
    }

    QTemporaryDir user;
    QTemporaryDir system;
    DesktopEntries entries{{user.path(), system.path()}, "de_AT"};
};

TEST_F(DesktopEntriesTest, GtkApplicationIdNamesTheEntry) {
    write(system, "org.xfce.mousepad", "Name=Mousepad\nExec=mousepad %U\n");
    EXPECT_EQ(find({"org.xfce.mousepad", "mousepad", "Mousepad", "mousepad"}), "org.xfce.mousepad");
}

TEST_F(DesktopEntriesTest, StartupClassIsComparedWithoutCase) {
    write(system, "chromium", "Name=Chromium\nStartupWMClass=chromium\nExec=/usr/bin/chromium %U\n");
    EXPECT_EQ(find({"", "chromium (/home/me/profile)", "Chromium", ""}), "chromium");
}

TEST_F(DesktopEntriesTest, StartupClassGoesBeforeTheFilesName) {
    write(system, "editor", "Name=One\n");
    write(system, "other", "Name=Two\nStartupWMClass=Editor\n");
    EXPECT_EQ(find({"", "editor", "Editor", ""}), "other");
}

TEST_F(DesktopEntriesTest, FilesNameIsTriedWithClassAndInstance) {
    write(system, "featherpad", "Name=FeatherPad\n");
    EXPECT_EQ(find({"", "", "FeatherPad", ""}), "featherpad");
    EXPECT_EQ(find({"", "featherpad", "Something", ""}), "featherpad");
}

TEST_F(DesktopEntriesTest, RunningProgramIsTheLastWay) {
    write(system, "com.example.Tool", "Name=Tool\nExec=env GDK_BACKEND=x11 /opt/tool/bin/tool-bin %f\n");
    EXPECT_EQ(find({"", "x", "X", "tool-bin"}), "com.example.Tool");
}

TEST_F(DesktopEntriesTest, OfSeveralWithTheSameProgramTheOneThatIsNamedAfterItCounts) {
    write(system, "org.xfce.mousepad-settings", "Name=Mousepad settings\nExec=mousepad --preferences\n");
    write(system, "org.xfce.mousepad", "Name=Mousepad\nExec=mousepad %U\n");
    write(system, "org.xfce.mousepad.zoo", "Name=Mousepad zoo\nExec=mousepad --zoo\n");
    EXPECT_EQ(find({"", "", "", "mousepad"}), "org.xfce.mousepad");
}

TEST_F(DesktopEntriesTest, UnknownWindowHasNoEntry) {
    write(system, "editor", "Name=Editor\n");
    EXPECT_EQ(find({"", "gtkpw", "Gtkpw", "gtkpw"}), "none");
    EXPECT_EQ(find({}), "none");
}

TEST_F(DesktopEntriesTest, NameIsInTheUsersLanguage) {
    write(system, "one", "Name=Editor\nName[de]=Texteditor\nName[de_AT]=Schreiber\n");
    write(system, "two", "Name=Editor\nName[de]=Texteditor\nName[fr]=Éditeur\n");
    write(system, "three", "Name=Editor\nName[fr]=Éditeur\n");
    EXPECT_EQ(entries.find({"one", "", "", ""})->name, "Schreiber");
    EXPECT_EQ(entries.find({"two", "", "", ""})->name, "Texteditor");
    EXPECT_EQ(entries.find({"three", "", "", ""})->name, "Editor");
}

TEST_F(DesktopEntriesTest, KeysOfActionsAreNotTheApplications) {
    write(system, "app", "Name=App\n[Desktop Action new]\nName=New window\nExec=other\n");
    EXPECT_EQ(entries.find({"app", "", "", ""})->name, "App");
    EXPECT_EQ(find({"", "", "", "other"}), "none");
}

TEST_F(DesktopEntriesTest, UsersEntryStandsForTheSystems) {
    write(system, "app", "Name=System\n");
    write(user, "app", "Name=User\n");
    EXPECT_EQ(entries.find({"app", "", "", ""})->name, "User");
}

TEST_F(DesktopEntriesTest, HiddenEntriesAndLinksAreNone) {
    write(system, "gone", "Name=Gone\nHidden=true\n");
    EXPECT_EQ(find({"gone", "", "", ""}), "none");
    EXPECT_FALSE(parseDesktopEntry("link", "[Desktop Entry]\nType=Link\nName=Link\n", "en_US"));
}

TEST_F(DesktopEntriesTest, ApplicationInstalledLaterIsFound) {
    // The times of a file system are coarse: as if the folder had been there for long.
    const std::filesystem::path folder(user.path().toStdString());
    last_write_time(folder, last_write_time(folder) - std::chrono::hours(1));
    EXPECT_EQ(find({"app", "", "", ""}), "none");
    write(user, "app", "Name=App\n");
    EXPECT_EQ(find({"app", "", "", ""}), "app");
}

} // namespace

} // namespace lorvane
