// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/windows/WindowRules.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

/// Windows that only write down what is done to them.
class RecordingFactory final : public WindowFactory {
 public:
    class Window final : public ShellWindow {
     public:
        Window(RecordingFactory& factory, WindowKind kind) : factory_(factory), name_(nameOf(kind)) {}
        ~Window() override { factory_.events.append(name_ + " gone"); }
        void bringForward() override { factory_.events.append(name_ + " forward"); }
        void applyPolicy(ActivationPolicy policy) override {
            factory_.events.append(name_ + (policy == ActivationPolicy::regular ? " regular" : " accessory"));
        }

     private:
        RecordingFactory& factory_;
        QString name_;
    };

    std::unique_ptr<ShellWindow> make(WindowKind kind, const QString& context,
                                      std::function<void()> closed) override {
        if (missing == kind) {
            return nullptr;
        }
        events.append(nameOf(kind) + " made" + (context.isEmpty() ? "" : " for " + context));
        byUser[kind] = std::move(closed);
        return std::make_unique<Window>(*this, kind);
    }
    static QString nameOf(WindowKind kind) {
        return kind == WindowKind::home ? "home" : kind == WindowKind::feedback ? "feedback" : "first run";
    }

    QStringList events;
    /// Closes a window as the user does.
    std::map<WindowKind, std::function<void()>> byUser;
    std::optional<WindowKind> missing;
};

struct WindowRulesTest : public testing::Test {
    bool isRegular() const { return rules.policy() == ActivationPolicy::regular; }
    RecordingFactory factory;
    WindowRules rules{factory};
};

TEST_F(WindowRulesTest, TheProgramStartsAsAnAccessoryWithoutWindows) {
    EXPECT_FALSE(isRegular());
    EXPECT_FALSE(rules.isOpen(WindowKind::home));
}

TEST_F(WindowRulesTest, HomeAndFeedbackMakeItRegularBeforeTheyShow) {
    rules.open(WindowKind::home);
    EXPECT_EQ(factory.events, (QStringList{"home made", "home regular", "home forward"}));
    factory.events.clear();
    rules.open(WindowKind::feedback, "a crash");
    EXPECT_EQ(factory.events,
              (QStringList{"feedback made for a crash", "feedback regular", "feedback forward"}));
}

TEST_F(WindowRulesTest, TheFirstRunChangesNothing) {
    rules.setFirstRunActive(true);
    rules.open(WindowKind::firstRun);
    EXPECT_FALSE(isRegular());
    EXPECT_EQ(factory.events, (QStringList{"first run made", "first run accessory", "first run forward"}));
    rules.close(WindowKind::firstRun);
    EXPECT_FALSE(isRegular());
}

TEST_F(WindowRulesTest, ASecondRequestBringsTheSameWindowForward) {
    for (const WindowKind kind : {WindowKind::home, WindowKind::feedback, WindowKind::firstRun}) {
        rules.open(kind);
        factory.events.clear();
        rules.open(kind);
        EXPECT_EQ(factory.events.filter("made"), QStringList());
        EXPECT_EQ(factory.events.last(), RecordingFactory::nameOf(kind) + " forward");
    }
}

TEST_F(WindowRulesTest, AClosedWindowIsMadeAnew) {
    rules.open(WindowKind::home);
    factory.byUser[WindowKind::home]();
    EXPECT_FALSE(rules.isOpen(WindowKind::home));
    EXPECT_EQ(factory.events.last(), "home gone");
    rules.open(WindowKind::home);
    EXPECT_EQ(factory.events.filter("made").size(), 2);
}

TEST_F(WindowRulesTest, ClosingHomeMakesAnAccessoryEvenUnderFeedback) {
    rules.open(WindowKind::home);
    rules.open(WindowKind::feedback);
    factory.events.clear();
    factory.byUser[WindowKind::home]();
    EXPECT_FALSE(isRegular());
    EXPECT_TRUE(rules.isOpen(WindowKind::feedback));
    EXPECT_EQ(factory.events, (QStringList{"feedback accessory", "home gone"}));
}

TEST_F(WindowRulesTest, ClosingFeedbackLeavesAHomeWindowWhereItStands) {
    rules.open(WindowKind::home);
    rules.open(WindowKind::feedback);
    factory.byUser[WindowKind::feedback]();
    EXPECT_TRUE(isRegular());
    factory.byUser[WindowKind::home]();
    EXPECT_FALSE(isRegular());
}

TEST_F(WindowRulesTest, ClosingTheOnlyFeedbackMakesAnAccessory) {
    rules.open(WindowKind::feedback);
    EXPECT_TRUE(isRegular());
    factory.byUser[WindowKind::feedback]();
    EXPECT_FALSE(isRegular());
}

TEST_F(WindowRulesTest, DuringTheFirstRunNoClosingMakesAnAccessory) {
    rules.setFirstRunActive(true);
    rules.open(WindowKind::home);
    rules.open(WindowKind::feedback);
    factory.byUser[WindowKind::home]();
    EXPECT_TRUE(isRegular());
    factory.byUser[WindowKind::feedback]();
    EXPECT_TRUE(isRegular());
    rules.setFirstRunActive(false);
    rules.open(WindowKind::feedback);
    factory.byUser[WindowKind::feedback]();
    EXPECT_FALSE(isRegular());
}

TEST_F(WindowRulesTest, AWindowThatIsNotThereChangesNothing) {
    factory.missing = WindowKind::feedback;
    EXPECT_FALSE(rules.open(WindowKind::feedback));
    EXPECT_FALSE(isRegular());
    EXPECT_TRUE(rules.open(WindowKind::home));
    rules.close(WindowKind::feedback);
    EXPECT_TRUE(isRegular());
}

} // namespace

} // namespace lorvane
