// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ShellWindows.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

/// Has the windows of the kinds it was given.
class SomeWindows final : public WindowFactory {
 public:
    struct Window final : ShellWindow {
        void bringForward() override {}
        void applyPolicy(ActivationPolicy) override {}
    };
    std::unique_ptr<ShellWindow> make(WindowKind kind, const QString& context,
                                      std::function<void()>) override {
        asked.emplace_back(kind, context);
        return kinds.contains(kind) ? std::make_unique<Window>() : nullptr;
    }
    QList<WindowKind> kinds;
    std::vector<std::pair<WindowKind, QString>> asked;
};

struct ShellWindowsTest : public testing::Test {
    TestFoundation world;
    SomeWindows factory;
    QStringList told;
    QStringList appearances;
    std::unique_ptr<ShellWindows> windows = std::make_unique<ShellWindows>(
        world.foundation, factory,
        ShellWindows::Callbacks{[this](const QString& choice) { appearances.append(choice); },
                                [this](const QString& text) { told.append(text); }});
};

TEST_F(ShellWindowsTest, WithoutAWindowTheFirstRunIsOverSomeMomentsAfterItWasAskedFor) {
    int over = 0;
    windows->onFirstRunOver = [&] { ++over; };
    windows->presentOnboarding();
    EXPECT_EQ(over, 0);
    EXPECT_EQ(world.preferences.stored(preference::onboarded), std::nullopt);
    world.clock.settle();
    EXPECT_EQ(over, 1);
    EXPECT_EQ(world.preferences.stored(preference::onboarded), true);
}

TEST_F(ShellWindowsTest, FirstRunEndsSilentlyWithTheProgram) {
    windows->onFirstRunOver = [] { FAIL(); };
    windows->presentOnboarding();
    windows.reset();
    world.clock.settle();
    EXPECT_FALSE(world.preferences.get(preference::onboarded));
}

TEST_F(ShellWindowsTest, WithAWindowTheFirstRunWaitsForTheUser) {
    factory.kinds = {WindowKind::firstRun};
    windows->onFirstRunOver = [] { FAIL(); };
    windows->presentOnboarding();
    world.clock.settle();
    EXPECT_FALSE(world.preferences.get(preference::onboarded));
}

TEST_F(ShellWindowsTest, TheUserIsToldOfAWindowThatIsMissing) {
    windows->openHomeWindow();
    windows->openFeedback(QStringLiteral("menu"));
    windows->openWhatsNew();
    EXPECT_EQ(told, (QStringList{"The window cannot be opened; the log says why.",
                                 "Feedback cannot be sent from here yet.",
                                 "There is no list of changes to show yet."}));
}

TEST_F(ShellWindowsTest, AWindowThatIsThereOpensWithoutWords) {
    factory.kinds = {WindowKind::home, WindowKind::feedback};
    windows->openHomeWindow();
    windows->openFeedback(QStringLiteral("menu"));
    EXPECT_EQ(told, QStringList());
    EXPECT_EQ(factory.asked, (std::vector<std::pair<WindowKind, QString>>{{WindowKind::home, ""},
                                                                          {WindowKind::feedback, "menu"}}));
}

TEST_F(ShellWindowsTest, TheAppearanceIsHandedOn) {
    windows->applyAppearance(QStringLiteral("dark"));
    EXPECT_EQ(appearances, QStringList{"dark"});
}

} // namespace

} // namespace lorvane
