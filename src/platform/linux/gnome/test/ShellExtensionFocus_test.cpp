// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/gnome/ShellExtensionFocus.h"

#include "platform/linux/gnome/ShellExtension.h"
#include "platform/linux/gnome/test/PrivateBus.h"

namespace lorvane {

namespace {

const QString program = QStringLiteral("com.ostrand.tirra");
const QString watchFocus = QStringLiteral("WatchFocus:");

QDBusMessage unknownMethod(const QDBusMessage& call) {
    return call.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"), QString());
}

class ShellFocus : public PrivateBus {
 protected:
    void bringExtension() {
        extension = std::make_unique<ScriptedService>(address, shellExtension::object);
        extension->take(shellExtension::service);
    }
    /// With the extension that has been asked to tell.
    void beWatching() {
        bringExtension();
        ASSERT_TRUE(bus.registerService(program));
        ASSERT_TRUE(called(watchFocus));
    }
    void tell(const QVariantList& arguments) {
        extension->emitSignal(shellExtension::object, shellExtension::interface, QStringLiteral("Focus"),
                              arguments);
    }
    void tell(const QString& windowClass, const QString& sandboxed, uint process) {
        tell(QVariantList{windowClass, sandboxed, process});
    }
    bool called(const QString& call) {
        return waitUntil([&] { return extension && extension->calls().contains(call); });
    }
    bool becomes(const std::optional<WindowIdentity>& expected) {
        return waitUntil([&] { return focus->active() == expected; });
    }

    std::unique_ptr<ScriptedService> extension;
    std::optional<ShellExtensionFocus> focus{std::in_place, bus, program};
    const WindowIdentity foot{QStringLiteral("foot"), 42};
};

TEST_F(ShellFocus, WithoutTheExtensionNoWindowIsKnown) {
    ASSERT_TRUE(bus.registerService(program));
    EXPECT_EQ(focus->active(), std::nullopt);
}

TEST_F(ShellFocus, IsAskedForOnceTheProgramHasTheNameByWhichTheExtensionKnowsIt) {
    bringExtension();
    ScriptedService other(address, QStringLiteral("/other"));
    other.take(program);
    EXPECT_FALSE(waitUntil([&] { return !extension->calls().isEmpty(); }, std::chrono::milliseconds(200)));
    other.drop(program);
    ASSERT_TRUE(bus.registerService(program));
    EXPECT_TRUE(called(watchFocus));
    EXPECT_EQ(extension->calls().size(), 1);
}

TEST_F(ShellFocus, IsTheWindowThatWasToldLast) {
    beWatching();
    tell(QStringLiteral("foot"), {}, 42);
    EXPECT_TRUE(becomes(foot));
    tell(QStringLiteral("kitty"), {}, 43);
    EXPECT_TRUE(becomes(WindowIdentity{QStringLiteral("kitty"), 43}));
}

TEST_F(ShellFocus, ASandboxKnowsItsApplicationBetterThanTheWindowDoes) {
    beWatching();
    tell(QStringLiteral("main"), QStringLiteral("org.example.Terminal"), 42);
    EXPECT_TRUE(becomes(WindowIdentity{QStringLiteral("org.example.Terminal"), 42}));
}

TEST_F(ShellFocus, AWindowThatSaysNothingOfItselfIsKnownByItsProcess) {
    beWatching();
    tell(QString(), {}, 42);
    EXPECT_TRUE(becomes(WindowIdentity{QString(), 42}));
}

TEST_F(ShellFocus, ThereIsNoneWhileNoWindowHasTheKeyboard) {
    beWatching();
    tell(QStringLiteral("foot"), {}, 42);
    ASSERT_TRUE(becomes(foot));
    tell(QString(), {}, 0);
    EXPECT_TRUE(becomes(std::nullopt));
}

TEST_F(ShellFocus, AnExtensionThatKnowsNoWindowsIsAskedOnceAndTellsNone) {
    bringExtension();
    extension->answer = unknownMethod;
    ASSERT_TRUE(bus.registerService(program));
    ASSERT_TRUE(called(watchFocus));
    EXPECT_FALSE(waitUntil([&] { return extension->calls().size() > 1; }, std::chrono::milliseconds(200)));
    EXPECT_EQ(focus->active(), std::nullopt);
}

TEST_F(ShellFocus, NobodyWaitsForAShellThatIsSlowAndWhatItTellsInTheEndCounts) {
    bringExtension();
    extension->answer = [](const QDBusMessage&) { return QDBusMessage(); };
    ASSERT_TRUE(bus.registerService(program));
    ASSERT_TRUE(called(watchFocus));
    EXPECT_EQ(focus->active(), std::nullopt);
    tell(QStringLiteral("foot"), {}, 42);
    EXPECT_TRUE(becomes(foot));
}

TEST_F(ShellFocus, GarbageChangesNothing) {
    bringExtension();
    extension->answer = [](const QDBusMessage& call) {
        return call.createReply({QStringLiteral("well"), 7, QStringLiteral("kitty")});
    };
    ASSERT_TRUE(bus.registerService(program));
    ASSERT_TRUE(called(watchFocus));
    tell(QStringLiteral("foot"), {}, 42);
    ASSERT_TRUE(becomes(foot));
    for (const QVariantList& garbage :
         {QVariantList{}, QVariantList{7}, QVariantList{QStringLiteral("a"), QStringLiteral("b")},
          QVariantList{42U, QStringLiteral("a"), QStringLiteral("b")},
          QVariantList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")},
          QVariantList{QStringLiteral("a"), QStringLiteral("b"), -1}}) {
        tell(garbage);
    }
    EXPECT_FALSE(waitUntil([this] { return focus->active() != foot; }, std::chrono::milliseconds(200)));
    tell(QStringLiteral("kitty"), {}, 43);
    EXPECT_TRUE(becomes(WindowIdentity{QStringLiteral("kitty"), 43}));
}

TEST_F(ShellFocus, WhatSomebodyElseTellsDoesNotCount) {
    beWatching();
    ScriptedService other(address, shellExtension::object);
    other.emitSignal(shellExtension::object, shellExtension::interface, QStringLiteral("Focus"),
                     {QStringLiteral("kitty"), QString(), 43U});
    EXPECT_FALSE(waitUntil([this] { return focus->active().has_value(); }, std::chrono::milliseconds(200)));
    tell(QStringLiteral("foot"), {}, 42);
    EXPECT_TRUE(becomes(foot));
}

TEST_F(ShellFocus, NothingIsKnownOnceTheExtensionHasGoneAndItIsAskedAnewWhenItIsBack) {
    beWatching();
    tell(QStringLiteral("foot"), {}, 42);
    ASSERT_TRUE(becomes(foot));
    extension.reset();
    EXPECT_TRUE(becomes(std::nullopt));
    bringExtension();
    EXPECT_TRUE(called(watchFocus));
    tell(QStringLiteral("foot"), {}, 42);
    EXPECT_TRUE(becomes(foot));
}

TEST_F(ShellFocus, TheExtensionIsToldWhenNobodyListensAnyMore) {
    beWatching();
    focus.reset();
    EXPECT_TRUE(called(QStringLiteral("UnwatchFocus:")));
}

} // namespace

} // namespace lorvane
