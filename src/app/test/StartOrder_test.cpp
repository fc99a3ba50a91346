// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/DictationWorld.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Steps = QStringList;

class OrderedPill final : public Pill {
 public:
    explicit OrderedPill(Steps& steps) : steps_(steps) {}
    void show() override { steps_.append("pill"); }
    void orderOut() override { steps_.append("pill out"); }

 private:
    Steps& steps_;
};

class OrderedWindows final : public Windows {
 public:
    explicit OrderedWindows(Steps& steps) : steps_(steps) {}
    void openHomeWindow() override { steps_.append("home"); }
    void presentOnboarding() override { steps_.append("first run"); }
    void closeOnboarding() override { steps_.append("first run closed"); }
    void openFeedback(const QString&) override { steps_.append("feedback"); }
    void openWhatsNew() override { steps_.append("what's new"); }
    void applyAppearance(const QString& word) override { steps_.append("appearance " + word); }

 private:
    Steps& steps_;
};

/// Notes when the permission is watched and read.
class OrderedAccessibility final : public Accessibility {
 public:
    explicit OrderedAccessibility(Steps& steps) : steps_(steps) {}
    bool isTrusted() const override {
        steps_.append("permission");
        return true;
    }
    void openAccessibilitySettings() override {}
    Handle subscribe(std::function<void()>) override {
        steps_.append("permission watched");
        return {};
    }

 private:
    Steps& steps_;
};

/// Notes when the first global monitor is made.
class OrderedKeys final : public KeyEvents {
 public:
    explicit OrderedKeys(Steps& steps) : steps_(steps) {}
    Handle addGlobalMonitor(KeyEventKind, std::function<void(const KeyEvent&)>) override {
        if (!steps_.contains("keys")) {
            steps_.append("keys");
        }
        return {};
    }
    Handle addLocalMonitor(KeyEventKind, std::function<bool(const KeyEvent&)>) override { return {}; }

 private:
    Steps& steps_;
};

struct StartOrder : public testing::Test {
    Steps start() {
        controller.start([this](TaskScope) -> QCoro::Task<void> {
            steps.append("first exchange");
            co_return;
        });
        return steps;
    }

    DictationWorld world;
    Preferences& preferences = world.preferences;
    Steps steps;
    OrderedPill pill{steps};
    OrderedWindows windows{steps};
    OrderedAccessibility accessibility{steps};
    OrderedKeys keyEvents{steps};
    ScreenPresence screen{world.clock, pill, windows};
    DictationStatus status{world.clock, screen, accessibility};
    GestureKeys keys{world.world.foundation, keyEvents};
    DictationController controller{world.world.foundation, status,        screen, keys,
                                   world.capture,          world.delivery};
};

TEST_F(StartOrder, AfterTheFirstRunKeysComeBeforeThePillAndTheWindow) {
    preferences.set(preference::appearance, QStringLiteral("dark"));
    preferences.set(preference::openWindowAtLaunch, true);
    EXPECT_EQ(start(), (Steps{"appearance dark", "permission watched", "permission", "keys", "pill", "home",
                              "first exchange"}));
}

TEST_F(StartOrder, ByDefaultNoWindowOpens) {
    EXPECT_EQ(start(), (Steps{"appearance system", "permission watched", "permission", "keys", "pill",
                              "first exchange"}));
}

TEST_F(StartOrder, TheFirstRunTakesThePlaceOfKeysAndPill) {
    preferences.set(preference::onboarded, false);
    preferences.set(preference::openWindowAtLaunch, true);
    EXPECT_EQ(start(), (Steps{"appearance system", "permission watched", "permission", "pill out",
                              "first run", "first exchange"}));
}

} // namespace

} // namespace lorvane
