// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/ibus/IbusPoster.h"
#include "support/Wait.h"

#include <QEventLoop>
#include <gtest/gtest.h>

namespace lorvane {

/// A poster whose memory of the user's engine is the test's.
class IbusFixture : public testing::Test {
 protected:
    EngineMemory memory() {
        return {[this] { return remembered; }, [this](const QString& engine) { remembered = engine; }};
    }
    /// Runs a task to its end, with a look every millisecond, for times to be worth something.
    template <typename Answer>
    std::optional<Answer> run(std::function<QCoro::Task<Answer>(TaskScope)> work) {
        std::optional<Answer> answer;
        const TaskHandle task =
            startTask([&](TaskScope scope) -> QCoro::Task<void> { answer = co_await work(scope); });
        EXPECT_TRUE(waitClosely([&] { return !task.isRunning(); }));
        return answer;
    }
    std::optional<PostOutcome> post(IbusPoster& poster, const QString& text) {
        return run<PostOutcome>([&, text](TaskScope scope) { return poster.post(nowhere, text, scope); });
    }
    std::optional<bool> canPost(IbusPoster& poster) {
        return run<bool>([&](TaskScope scope) { return poster.canPost(nowhere, scope); });
    }
    std::optional<bool> isUserComposing(IbusPoster& poster) {
        return run<bool>([&](TaskScope scope) { return poster.isUserComposing(scope); });
    }
    bool waitClosely(const std::function<bool()>& condition, Duration bound = std::chrono::seconds(5)) {
        const Instant deadline = clock.now() + bound;
        while (!condition() && clock.now() < deadline) {
            QEventLoop loop;
            const Handle next = clock.after(std::chrono::milliseconds(1), [&loop] { loop.quit(); });
            loop.exec();
        }
        return condition();
    }

    /// The engine finds its field by itself.
    const PostingTarget nowhere{{}, FieldElement(QStringLiteral("field")), 0};
    QtClock clock;
    QStringList lines;
    DiagnosticLog log{clock, std::nullopt, [this](const QString& line) { lines.append(line); }};
    QString remembered;
};

} // namespace lorvane
