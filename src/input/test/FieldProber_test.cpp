// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/FieldProber.h"

#include "base/testing/VirtualClock.h"
#include "input/testing/FakeFieldAccess.h"
#include "input/testing/FakeWorkspace.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

constexpr ProcessId editor = 100;
constexpr ProcessId browser = 200;

class FieldProberTest : public ::testing::Test {
 protected:
    std::optional<QString> focused(ProcessId process) {
        std::optional<FieldElement> found;
        const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
            found = co_await prober.focusedElementOfProcess(process, scope);
        });
        EXPECT_FALSE(task.isRunning());
        return found ? std::optional(found->identity()) : std::nullopt;
    }
    std::optional<TypingFieldState> state(const TypingField& field) {
        std::optional<TypingFieldState> found;
        const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
            found = co_await prober.typingFieldState(field, scope);
        });
        EXPECT_FALSE(task.isRunning());
        return found;
    }
    /// The editor in front with the caret at the end of "hello" in field "body".
    TypingField armed() {
        workspace.front = RunningApplication{editor, "Editor", "editor"};
        const FieldElement element = fields.focus(editor, "body");
        fields.field("body") = {QString("hello"), 5};
        return {editor, element};
    }
    TaskHandle waitFor(const TypingField& field, qint64 wanted, double timeout) {
        arrived.reset();
        return startTask([=, this](TaskScope scope) -> QCoro::Task<void> {
            arrived = co_await prober.waitForFieldLength(field, wanted, seconds(timeout), scope);
        });
    }

    VirtualClock clock;
    FakeFieldAccess fields{clock};
    FakeWorkspace workspace;
    FieldProber prober{fields, workspace, clock};
    std::optional<bool> arrived;
};

TEST_F(FieldProberTest, FocusedFieldIsFoundWithoutAsking) {
    fields.focus(editor, "body");
    EXPECT_EQ(focused(editor), "body");
    EXPECT_EQ(fields.focusQueries, 1);
    EXPECT_TRUE(fields.manualAccessibilityRequests.empty());
}

TEST_F(FieldProberTest, ProcessThatShowsNoFieldIsAskedAndLookedAtOnceMore) {
    fields.showsWhenAsked(browser, "address");
    EXPECT_EQ(focused(browser), "address");
    EXPECT_EQ(fields.focusQueries, 2);
    EXPECT_EQ(fields.manualAccessibilityRequests, std::vector{browser});
}

TEST_F(FieldProberTest, ProcessIsAskedOnceInARun) {
    EXPECT_EQ(focused(browser), std::nullopt);
    EXPECT_EQ(focused(browser), std::nullopt);
    EXPECT_EQ(fields.manualAccessibilityRequests, std::vector{browser});
    EXPECT_EQ(fields.focusQueries, 3);
}

TEST_F(FieldProberTest, EachProcessIsAskedForItself) {
    focused(browser);
    focused(editor);
    EXPECT_EQ(fields.manualAccessibilityRequests, (std::vector{browser, editor}));
}

TEST_F(FieldProberTest, ProcessThatWasAskedIsStillFoundLater) {
    focused(browser);
    fields.focus(browser, "page");
    EXPECT_EQ(focused(browser), "page");
}

TEST_F(FieldProberTest, ProbeReadsTheField) {
    const TypingField field = armed();
    std::optional<FieldProbe> probe;
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        probe = co_await prober.probeField(field.element, scope);
    });
    EXPECT_EQ(probe, (FieldProbe{5, 5, true}));
}

TEST_F(FieldProberTest, StateOfTheTypingFieldIsItsLengthAndCaret) {
    const TypingField field = armed();
    fields.field("body").caret = 2;
    const auto found = state(field);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->element, field.element);
    EXPECT_EQ(found->length, 5);
    EXPECT_EQ(found->caret, 2);
}

TEST_F(FieldProberTest, NoStateWhileAnotherApplicationIsInFront) {
    const TypingField field = armed();
    workspace.front = RunningApplication{browser, "Browser", "browser"};
    EXPECT_FALSE(state(field));
    workspace.front = std::nullopt;
    EXPECT_FALSE(state(field));
}

TEST_F(FieldProberTest, NoStateOnceTheFocusMovesToAnotherFieldOfTheApplication) {
    const TypingField field = armed();
    fields.focus(editor, "search");
    EXPECT_FALSE(state(field));
    fields.focus(editor, "body");
    EXPECT_TRUE(state(field));
}

TEST_F(FieldProberTest, NoStateWithoutFocusOrText) {
    const TypingField field = armed();
    fields.field("body").text = std::nullopt;
    EXPECT_FALSE(state(field));
    fields.loseFocus(editor);
    EXPECT_FALSE(state(field));
    EXPECT_TRUE(fields.manualAccessibilityRequests.empty());
}

TEST_F(FieldProberTest, WaitEndsWhenTheLengthIsReached) {
    const TypingField field = armed();
    const TaskHandle task = waitFor(field, 7, 0.5);
    clock.advance(seconds(0.1));
    EXPECT_EQ(arrived, std::nullopt);
    fields.field("body").text = "hello!!";
    clock.advance(std::chrono::milliseconds(5));
    EXPECT_EQ(arrived, true);
}

TEST_F(FieldProberTest, WaitIsOverAtTheDeadline) {
    const TypingField field = armed();
    const TaskHandle task = waitFor(field, 7, 0.5);
    clock.advance(seconds(0.499));
    EXPECT_EQ(arrived, std::nullopt);
    clock.advance(seconds(0.001));
    EXPECT_EQ(arrived, false);
}

TEST_F(FieldProberTest, LengthThatIsThereAlreadyIsFoundAtOnce) {
    const TaskHandle task = waitFor(armed(), 5, 0.5);
    EXPECT_EQ(arrived, true);
}

TEST_F(FieldProberTest, WaitWithoutTimeDoesNotLook) {
    const TaskHandle task = waitFor(armed(), 5, 0);
    EXPECT_EQ(arrived, false);
    EXPECT_EQ(fields.focusQueries, 0);
}

TEST_F(FieldProberTest, WaitGoesOnWhileTheFocusIsElsewhere) {
    const TypingField field = armed();
    fields.focus(editor, "search");
    const TaskHandle task = waitFor(field, 5, 0.5);
    clock.advance(seconds(0.2));
    EXPECT_EQ(arrived, std::nullopt);
    fields.focus(editor, "body");
    clock.advance(std::chrono::milliseconds(5));
    EXPECT_EQ(arrived, true);
}

TEST_F(FieldProberTest, CancellationEndsTheWait) {
    TaskHandle task = waitFor(armed(), 7, 0.5);
    task.cancel();
    EXPECT_FALSE(task.isRunning());
    EXPECT_EQ(arrived, std::nullopt);
}

} // namespace

} // namespace lorvane
