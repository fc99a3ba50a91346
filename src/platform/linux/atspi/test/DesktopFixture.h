// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/testing/TestFoundation.h"
#include "platform/linux/atspi/AtspiFieldAccess.h"
#include "platform/linux/desktop/QtClock.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace lorvane {

/// The application in front, as the test says.
struct ToldWorkspace final : Workspace {
    std::optional<RunningApplication> front;
    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override { return front; }
};

/// Lets events happen until the condition holds, at most twenty seconds.
inline bool until(const std::function<bool()>& condition, qint64 bound = 20000) {
    QElapsedTimer elapsed;
    elapsed.start();
    while (!condition()) {
        if (elapsed.hasExpired(bound)) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
    }
    return true;
}

/// Runs one task to its end.
template <typename T, typename Make>
T finish(Make make) {
    std::optional<T> result;
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        T value = co_await make(scope);
        result.emplace(std::move(value));
    });
    if (!until([&] { return result.has_value(); })) {
        throw std::runtime_error("the task did not end");
    }
    return std::move(*result);
}

/// A program of the test with its window; it ends with this.
class Program {
 public:
    explicit Program(const QString& path, const QStringList& arguments = {}) {
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(path, arguments);
        if (!process_.waitForStarted()) {
            throw std::runtime_error("cannot start " + path.toStdString());
        }
        id_ = process_.processId();
    }
    ~Program() { end(); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    [[nodiscard]] ProcessId id() const { return id_; }
    void order(const QString& line) { process_.write(line.toUtf8() + '\n'); }
    void end() {
        process_.kill();
        process_.waitForFinished();
    }

 private:
    QProcess process_;
    ProcessId id_ = 0;
};

/// The adapter on the real accessibility bus of the virtual desktop.
class AtspiDesktopTest : public ::testing::Test {
 protected:
    AtspiDesktopTest() {
        if (!until([this] { return bus.isConnected() && accessibilitySwitch.isOn(); })) {
            throw std::runtime_error("no accessibility bus");
        }
    }

    std::optional<FieldElement> focus(ProcessId process) {
        return finish<std::optional<FieldElement>>(
            [&](TaskScope scope) { return access.focusedElement(process, scope); });
    }
    /// The same, as soon as the program finds the time to answer; a loaded machine may need a second try.
    std::optional<FieldElement> focusOnceTold(ProcessId process) {
        std::optional<FieldElement> found;
        until([&] {
            found = focus(process);
            return found.has_value();
        });
        return found;
    }
    std::optional<FieldReading> read(const FieldElement& element) {
        return finish<std::optional<FieldReading>>(
            [&](TaskScope scope) { return access.read(element, scope); });
    }
    bool isSecure() {
        return finish<bool>([&](TaskScope scope) { return access.isSecureEventInputEnabled(scope); });
    }
    /// Reads the focused field of the process until it is as wanted; the failure says what was seen last.
    ::testing::AssertionResult reads(ProcessId process, qint64 length, qint64 caret, const QString& after) {
        QString seen;
        const bool good = until([&] {
            const auto element = focus(process);
            const auto reading = element ? read(*element) : std::nullopt;
            seen = !element   ? QStringLiteral("no focus")
                   : !reading ? element->identity() + QStringLiteral(" cannot be read")
                              : QStringLiteral("length %1, caret %2, after \"%3\"")
                                    .arg(reading->length)
                                    .arg(reading->caret)
                                    .arg(reading->afterCaret.left(40));
            return reading && reading->length == length && reading->caret == caret &&
                   reading->afterCaret.left(40) == after.left(40);
        });
        return good ? ::testing::AssertionSuccess()
                    : ::testing::AssertionFailure() << "last: " << seen.toStdString();
    }
    QString fileWith(const QString& text) {
        const QString path = folder.filePath(QStringLiteral("text%1.txt").arg(++files));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8());
        return path;
    }

    QtClock clock;
    QTemporaryDir folder;
    int files = 0;
    ToldWorkspace workspace;
    AtspiBus bus{clock, QDBusConnection::sessionBus()};
    AccessibilitySwitch accessibilitySwitch{QDBusConnection::sessionBus()};
    AtspiFieldAccess access{bus, accessibilitySwitch, workspace, clock};
};

} // namespace lorvane
