// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/LiveTyping.h"
#include "core/testing/DictationWorld.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

namespace lorvane {

inline const QString hello = QStringLiteral("Hello there, you."); // 17 units: two posts

/// Live typing into the editor's field, on virtual time.
class LiveTypingTest : public ::testing::Test {
 protected:
    LiveTypingTest() { w.showField(); }

    /// Each runs to its end, however long that takes.
    void arm() {
        run([this](TaskScope scope) { return w.typing.armTyping(std::move(scope)); });
    }
    void type(const QString& fragment) {
        run([=, this](TaskScope scope) { return w.typing.typeLive(fragment, std::move(scope)); });
    }
    SettleOutcome settle(const QString& text) {
        SettleOutcome outcome = SettleOutcome::handOver;
        run([&](TaskScope scope) -> QCoro::Task<void> {
            outcome = co_await w.typing.settleTyping(text, std::move(scope));
        });
        return outcome;
    }
    bool abandon(const QString& reason) {
        bool clean = false;
        run([&](TaskScope scope) -> QCoro::Task<void> {
            clean = co_await w.typing.abandonTyping(reason, std::move(scope));
        });
        return clean;
    }
    void run(const TaskBody& body) {
        const TaskHandle task = startTask(body);
        constexpr Duration step = std::chrono::milliseconds(1);
        const Instant bound = w.clock.now() + std::chrono::minutes(1);
        while (task.isRunning() && w.clock.now() < bound) {
            w.clock.advance(step);
        }
        ASSERT_FALSE(task.isRunning());
    }
    void armAndType(const QString& fragment) {
        arm();
        type(fragment);
    }
    [[nodiscard]] QString text() const { return w.field.text(); }
    [[nodiscard]] QStringList lines() {
        return w.logged("[tirra-").filter(QRegularExpression("type|retyping"));
    }
    [[nodiscard]] QString lastLine() { return lines().isEmpty() ? QString() : lines().back(); }
    [[nodiscard]] QStringList listed() const { return w.preferences.get(preference::appsThatCannotKeepUp); }
    [[nodiscard]] const TypingAttempt& attempt() const { return w.typing.attempt(); }
    void moveFocusElsewhere() { w.fields.focus(DictationWorld::editor, "another"); }
    /// The field does not answer for so long; what it is sent meanwhile is lost.
    [[nodiscard]] Handle hangFor(Duration time) {
        const QString text = w.field.text();
        w.fields.field("body").text.reset();
        return w.clock.after(time, [this, text] { w.fields.field("body").text = text; });
    }
    void bringBrowserToFront() {
        w.workspace.front = RunningApplication{7, "Browser", "org.example.Browser"};
    }

    DictationWorld w;
};

} // namespace lorvane
