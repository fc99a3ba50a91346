// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/DesktopApps.h"
#include "support/PhysicalKeyboard.h"
#include "support/Wait.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

/// With the folders of the session's user and not those that a suite has for itself: the desktop looks there.
ToolResult run(const QStringList& command) {
    QStringList all;
    for (const char* const name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"}) {
        all << QStringLiteral("-u") << QString::fromLatin1(name);
    }
    return runTool(QStringLiteral("env"), all + command);
}

ToolResult setup(const QStringList& arguments) {
    const ToolResult result = run(QStringList{QStringLiteral(LORVANE), QStringLiteral("setup")} + arguments);
    EXPECT_EQ(result.status, 0) << result.output.toStdString() << result.errors.toStdString();
    return result;
}

QByteArray enabledExtensions() {
    return run({QStringLiteral("gsettings"), QStringLiteral("get"), QStringLiteral("org.gnome.shell"),
                QStringLiteral("enabled-extensions")})
        .output;
}

std::optional<QByteArray> contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? std::optional(file.readAll()) : std::nullopt;
}

TEST(SetupInGnome, ExtensionIsPutInPlaceAndRenewedAndTakenAway) {
    const QString script =
        QDir::homePath() +
        QStringLiteral("/.local/share/gnome-shell/extensions/keys@tirra.ostrand.com/extension.js");
    const QByteArray before = enabledExtensions();
    ASSERT_FALSE(before.isEmpty());
    setup({QStringLiteral("hold"), QStringLiteral("--yes")});
    EXPECT_TRUE(QFile::exists(script));
    EXPECT_TRUE(enabledExtensions().contains("'keys@tirra.ostrand.com'"));
    const auto present = contentOf(script);
    EXPECT_TRUE(
        setup({QStringLiteral("hold"), QStringLiteral("--yes")}).output.contains("has not loaded it"));
    QFile older(script);
    ASSERT_TRUE(older.open(QIODevice::WriteOnly) && older.write("// older\n") > 0);
    older.close();
    EXPECT_TRUE(setup({QStringLiteral("hold"), QStringLiteral("--yes")}).output.contains("an older version"));
    EXPECT_EQ(contentOf(script), present);
    setup({QStringLiteral("hold"), QStringLiteral("--undo")});
    EXPECT_FALSE(QFile::exists(script));
    EXPECT_EQ(enabledExtensions(), before);
}

// KWin writes lines of its own into the file as soon as it looks at it again.
TEST(SetupInKwin, InputMethodIsChosenAndTakenBackAndOtherLinesStay) {
    const QString kwinrc = QDir::homePath() + QStringLiteral("/.config/kwinrc");
    const QByteArray before = "[Wayland]\nVirtualKeyboardEnabled=true\n\n[Xwayland]\nScale=1\n";
    ASSERT_TRUE(QDir().mkpath(QFileInfo(kwinrc).path()));
    QFile file(kwinrc);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(before);
    file.close();
    setup({QStringLiteral("typing"), QStringLiteral("--yes")});
    EXPECT_TRUE(contentOf(kwinrc).value_or(QByteArray()).contains("InputMethod="));
    EXPECT_TRUE(
        setup({QStringLiteral("typing"), QStringLiteral("--yes")}).output.contains("Nothing is missing"));
    setup({QStringLiteral("typing"), QStringLiteral("--undo")});
    const QByteArray after = contentOf(kwinrc).value_or(QByteArray());
    EXPECT_FALSE(after.contains("InputMethod"));
    EXPECT_TRUE(after.contains("[Wayland]\nVirtualKeyboardEnabled=true\n"));
    EXPECT_TRUE(after.contains("[Xwayland]\nScale=1\n"));
}

TEST(SetupInKwin, ModifiersAreShownToXServerAtOnceAndNoLongerAfterwards) {
    const QString kwinrc = QDir::homePath() + QStringLiteral("/.config/kwinrc");
    const QByteArray choice = "\nXwaylandEavesdrops=";
    const QByteArray before = contentOf(kwinrc).value_or(QByteArray());
    ASSERT_FALSE(before.contains(choice));
    PhysicalKeyboard hand;
    QProcess ear;
    ear.start(QStringLiteral("xinput"), {QStringLiteral("test-xi2"), QStringLiteral("--root")});
    ASSERT_TRUE(ear.waitForStarted());
    QByteArray heard;
    const auto isSeen = [&] {
        heard += ear.readAllStandardOutput();
        return heard.contains("RawKeyPress");
    };
    setup({QStringLiteral("hold"), QStringLiteral("--yes")});
    EXPECT_TRUE(contentOf(kwinrc).value_or(QByteArray()).contains(choice + "Modifiers\n"));
    EXPECT_TRUE(
        setup({QStringLiteral("hold"), QStringLiteral("--yes")}).output.contains("Nothing is missing"));
    const auto field = DesktopApp::mousepad();
    EXPECT_TRUE(waitUntil([&] {
        hand.tap(keycode::rightControl);
        return isSeen();
    }));
    setup({QStringLiteral("hold"), QStringLiteral("--undo")});
    EXPECT_FALSE(contentOf(kwinrc).value_or(QByteArray()).contains(choice));
    EXPECT_TRUE(waitUntil([&] {
        (void)isSeen();
        heard.clear();
        hand.tap(keycode::rightControl);
        return !waitUntil(isSeen, std::chrono::milliseconds(300));
    })) << heard.toStdString();
    ear.kill();
    ear.waitForFinished();
}

} // namespace

} // namespace lorvane
