// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/DiagnosticLog.h"
#include "core/FragmentPoster.h"
#include "platform/linux/ibus/IbusBus.h"
#include "platform/linux/ibus/IbusEngine.h"
#include "platform/linux/ibus/PreeditWatch.h"

#include <functional>
#include <memory>
#include <optional>

namespace lorvane {

/// Where the name of the user's engine is kept while ours is in its place, for a next start after a crash.
/// Empty: nothing is borrowed.
struct EngineMemory {
    std::function<QString()> load;
    std::function<void(const QString&)> save;
};

/// Commits text as an input method, by an engine that exists only while a text is typed: it has a connection
/// to the daemon of its own. (An engine that is made known for longer takes the engine in force with it when
/// its connection ends, even when that is another one by then; seen with IBus 1.5.27.) Nothing passes as a
/// key, so that layout and held modifiers make no difference. A field is offered when its application uses
/// IBus and the user is not composing anything. Text that is committed before the last was taken over may
/// replace it: the next fragment is only posted when the last has been read back. Main thread; only the end
/// of the program waits for the daemon, for a bounded time.
class IbusPoster final : public FragmentPoster {
 public:
    IbusPoster(Clock& clock, DiagnosticLog& log, EngineMemory memory,
               IbusAddressPlaces places = ibusAddressPlaces());
    IbusPoster(const IbusPoster&) = delete;
    IbusPoster& operator=(const IbusPoster&) = delete;
    ~IbusPoster() override;

    [[nodiscard]] QString name() const override { return QStringLiteral("input method (IBus)"); }
    [[nodiscard]] bool takesLineBreaks() const override { return false; }
    QCoro::Task<bool> canPost(PostingTarget target, TaskScope scope) override;
    QCoro::Task<PostOutcome> post(PostingTarget target, QString text, TaskScope scope) override;
    void finish() override;

    /// The user composes with an engine of the daemon's, so that keys would go into that. False where it
    /// cannot be told.
    QCoro::Task<bool> isUserComposing(TaskScope scope);
    /// The daemon answers.
    [[nodiscard]] bool isConnected() const { return bus_.isConnected(); }
    /// Our engine is, or may be, in the place of the user's.
    [[nodiscard]] bool isBorrowing() const { return isBorrowing_; }

 private:
    void busChanged();
    /// Connects and makes the engine known.
    QCoro::Task<bool> bringEngine(TaskScope scope);
    /// For what comes within a bound.
    QCoro::Task<bool> await(std::function<bool()> condition, Duration bound, TaskScope scope);
    QCoro::Task<bool> borrow(TaskScope scope);
    /// The engine in force; an empty name when there is none; absent when the daemon does not say.
    QCoro::Task<std::optional<QString>> engineInForce(TaskScope scope);
    QCoro::Task<bool> putInForce(QString engine, TaskScope scope);
    QCoro::Task<bool> isComposing(TaskScope scope);
    /// The input context that has the focus; empty when there is none or the daemon does not say.
    QCoro::Task<QString> currentContext(TaskScope scope);
    void beginGivingBack();
    QCoro::Task<void> giveBack(QString usersEngine, TaskScope scope);

    Clock& clock_;
    DiagnosticLog& log_;
    EngineMemory memory_;
    IbusEngine engine_;
    IbusBus bus_;
    PreeditWatch preedit_;
    std::unique_ptr<IbusLink> engineLink_;
    bool isBorrowing_ = false;
    QString usersEngine_;
    Handle busChanged_;
    Handle idle_;
    TaskHandle givingBack_;
};

} // namespace lorvane
