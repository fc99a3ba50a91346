// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/ApplicationNaming.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace lorvane {

namespace {

TEST(ApplicationIdsTest, OfAScopeWithALauncher) {
    EXPECT_EQ(applicationIdsOf("0::/user.slice/user@1000.service/app.slice/"
                               "app-gnome-org.gnome.TextEditor-4711.scope\n"),
              (QStringList{"org.gnome.TextEditor", "gnome-org.gnome.TextEditor"}));
}

TEST(ApplicationIdsTest, OfAScopeWithoutALauncher) {
    EXPECT_EQ(applicationIdsOf("0::/app.slice/app-org.kde.kate-4711.scope"), QStringList{"org.kde.kate"});
}

TEST(ApplicationIdsTest, OfAService) {
    EXPECT_EQ(applicationIdsOf("0::/app.slice/app-org.kde.kate@9f86d081884c.service"),
              QStringList{"org.kde.kate"});
}

TEST(ApplicationIdsTest, ADashOfTheNameIsWrittenAsItsCode) {
    EXPECT_EQ(applicationIdsOf("0::/app.slice/app-gnome-firefox\\x2desr-4711.scope").first(), "firefox-esr");
}

TEST(ApplicationIdsTest, NoneOfWhatIsNoApplication) {
    EXPECT_TRUE(
        applicationIdsOf("0::/user.slice/user@1000.service/session.slice/pipewire.service").isEmpty());
    EXPECT_TRUE(applicationIdsOf("0::/").isEmpty());
    EXPECT_TRUE(applicationIdsOf("").isEmpty());
    EXPECT_TRUE(applicationIdsOf("app-.scope").isEmpty());
}

TEST(ProcessTraitsTest, OfThisVeryProcess) {
    const ProcessTraits traits = traitsOf(QCoreApplication::applicationPid());
    EXPECT_EQ(traits.program, "lorvane_app_test");
    EXPECT_TRUE(traits.script.isEmpty());
}

TEST(ProcessTraitsTest, NothingOfAProcessThatIsNotThere) {
    EXPECT_TRUE(traitsOf(0).program.isEmpty());
    EXPECT_TRUE(traitsOf(-5).program.isEmpty());
}

class ApplicationNamingTest : public ::testing::Test {
 protected:
    void install(const QString& id, const QByteArray& keys) {
        QFile file(folder.filePath(id + ".desktop"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Desktop Entry]\nType=Application\n" + keys);
    }
    void SetUp() override {
        install("org.gnome.TextEditor", "Name=Text Editor\nExec=gnome-text-editor %U\n");
        install("firefox-esr", "Name=Firefox ESR\nExec=/usr/lib/firefox-esr/firefox-esr %u\n");
        install("org.kde.konsole", "Name=Konsole\nExec=konsole\n");
        install("terminator", "Name=Terminator\nExec=terminator\n");
        install("org.example.Boxed", "Name=Boxed\nExec=/usr/bin/flatpak run org.example.Boxed\n");
    }
    RunningApplication name(const ProcessTraits& traits, const QString& shownName) {
        return naming.nameFrom(7, traits, shownName);
    }

    QTemporaryDir folder;
    ApplicationNaming naming{DesktopEntries({folder.path()}, "en_US")};
};

TEST_F(ApplicationNamingTest, ByTheProgram) {
    EXPECT_EQ(name({"gnome-text-editor", {}, {}, {}}, "gnome-text-editor"),
              (RunningApplication{7, "Text Editor", "org.gnome.TextEditor"}));
}

TEST_F(ApplicationNamingTest, BothNamesOfOneProcessGiveTheSameApplication) {
    const ProcessTraits traits{"firefox-esr", {}, {}, {}};
    EXPECT_EQ(name(traits, "Firefox"), name(traits, "firefox-esr"));
}

TEST_F(ApplicationNamingTest, ByTheScriptAndNotByItsInterpreter) {
    EXPECT_EQ(name({"python3.11", "terminator", {}, {}}, "terminator").bundleIdentifier, "terminator");
}

TEST_F(ApplicationNamingTest, BySandboxBeforeTheProgramInIt) {
    EXPECT_EQ(name({"konsole", {}, "org.example.Boxed", {}}, "whatever").bundleIdentifier,
              "org.example.Boxed");
}

TEST_F(ApplicationNamingTest, ByTheScopeThatTheDesktopStartedItIn) {
    const QStringList scope{"org.gnome.TextEditor", "gnome-org.gnome.TextEditor"};
    EXPECT_EQ(name({"wrapped-binary", {}, {}, scope}, "").bundleIdentifier, "org.gnome.TextEditor");
}

TEST_F(ApplicationNamingTest, WhatWasStartedFromATerminalIsNotTheTerminal) {
    const QStringList scope{"org.kde.konsole"};
    EXPECT_EQ(name({"gnome-text-editor", {}, {}, scope}, "gnome-text-editor").bundleIdentifier,
              "org.gnome.TextEditor");
    EXPECT_EQ(name({"own-tool", {}, {}, scope}, "").bundleIdentifier, "own-tool");
}

TEST_F(ApplicationNamingTest, WithoutAnEntryItIsWhatItCallsItself) {
    EXPECT_EQ(name({"own-tool", {}, {}, {}}, "My tool"), (RunningApplication{7, "My tool", "My tool"}));
    EXPECT_EQ(name({"own-tool", {}, {}, {}}, ""), (RunningApplication{7, "own-tool", "own-tool"}));
    EXPECT_EQ(name({}, ""), (RunningApplication{7, "", ""}));
}

} // namespace

} // namespace lorvane
