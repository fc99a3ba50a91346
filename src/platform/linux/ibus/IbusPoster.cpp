// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/IbusPoster.h"

#include "platform/linux/ibus/IbusValues.h"

#include <QCoreApplication>
#include <QDBusObjectPath>

namespace lorvane {

namespace {

constexpr Duration questionBound = std::chrono::milliseconds(140);
/// The daemon asks the engines themselves while it changes them.
constexpr Duration changeBound = std::chrono::milliseconds(500);
/// The focus is told anew when an engine comes into force.
constexpr Duration fieldAwaitedFor = std::chrono::milliseconds(200);
constexpr Duration untilNoticed = std::chrono::milliseconds(300);
constexpr Duration atTheEnd = std::chrono::seconds(1);
constexpr Duration purposeAwaitedFor = std::chrono::milliseconds(50);
constexpr Duration betweenLooks = std::chrono::milliseconds(5);
/// A stream that has stopped does not keep the user from their input method.
constexpr Duration longestIdle = std::chrono::seconds(5);

bool isAnswer(const QDBusMessage& message) { return message.type() == QDBusMessage::ReplyMessage; }

/// The value of a property that was asked for.
QVariant valueIn(const QDBusMessage& answer) {
    return answer.arguments().value(0).value<QDBusVariant>().variant();
}

} // namespace

IbusPoster::IbusPoster(Clock& clock, DiagnosticLog& log, EngineMemory memory, IbusAddressPlaces places)
    : clock_(clock), log_(log), memory_(std::move(memory)), bus_(std::move(places)) {
    busChanged_ = bus_.onChange([this] { busChanged(); });
}

IbusPoster::~IbusPoster() {
    finish();
    const Handle bound = clock_.after(atTheEnd, [this] { givingBack_.cancel(); });
    while (givingBack_.isRunning()) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::WaitForMoreEvents);
    }
}

void IbusPoster::busChanged() {
    isBorrowing_ = false;
    engineLink_.reset();
    engine_.forget();
    if (!bus_.isConnected()) {
        return;
    }
    preedit_.start(bus_.link());
    // After a crash, or after a daemon that went away with our engine in force.
    usersEngine_ = memory_.load();
    if (!usersEngine_.isEmpty()) {
        beginGivingBack();
    }
}

QCoro::Task<bool> IbusPoster::canPost(PostingTarget /*target*/, TaskScope scope) {
    if (!bus_.isConnected()) {
        co_return false;
    }
    const bool composing = co_await isComposing(scope);
    co_return !composing;
}

/// Also when it cannot be told.
QCoro::Task<bool> IbusPoster::isComposing(TaskScope scope) {
    const QString context = co_await currentContext(scope);
    co_return context.isEmpty() || preedit_.isComposingIn(context);
}

QCoro::Task<bool> IbusPoster::isUserComposing(TaskScope scope) {
    const QString context = co_await currentContext(scope);
    co_return preedit_.isComposingIn(context);
}

QCoro::Task<QString> IbusPoster::currentContext(TaskScope scope) {
    if (!bus_.isConnected()) {
        co_return QString();
    }
    const auto asking = bus_.link().property(QStringLiteral("CurrentInputContext"), questionBound);
    const QDBusMessage answer = co_await asking.wait(scope);
    co_return isAnswer(answer) ? valueIn(answer).value<QDBusObjectPath>().path() : QString();
}

QCoro::Task<PostOutcome> IbusPoster::post(PostingTarget /*target*/, QString text, TaskScope scope) {
    idle_.reset();
    while (givingBack_.isRunning()) {
        co_await sleep(clock_, betweenLooks, scope);
    }
    if (!bus_.isConnected()) {
        co_return PostOutcome::refused;
    }
    if (!isBorrowing_) {
        const bool isOurs = co_await borrow(scope);
        if (!isOurs) {
            co_return PostOutcome::refused;
        }
    }
    idle_ = clock_.after(longestIdle, [this] { finish(); });
    if (!engineLink_ || !engine_.hasField() || engine_.isSecret()) {
        co_return PostOutcome::refused;
    }
    engineLink_->send(engine_.commit(text));
    co_return PostOutcome::posted;
}

QCoro::Task<bool> IbusPoster::borrow(TaskScope scope) {
    const bool composing = co_await isComposing(scope);
    const auto users = co_await engineInForce(scope);
    // Without an engine of the user's there would be nothing to give back.
    if (composing || !users || users->isEmpty() || *users == IbusEngine::name) {
        co_return false;
    }
    usersEngine_ = *users;
    memory_.save(usersEngine_);
    isBorrowing_ = true;
    const bool isThere = co_await bringEngine(scope);
    const bool inForce = isThere && co_await putInForce(IbusEngine::name, scope);
    const bool hasField =
        inForce && co_await await([this] { return engine_.hasField(); }, fieldAwaitedFor, scope);
    if (!hasField) {
        log_.diagLog(QStringLiteral("[tirra-type] no field listens to the input method"));
        finish();
        co_return false;
    }
    // The purpose is told right behind the focus.
    (void)co_await await([this] { return engine_.knowsPurpose(); }, purposeAwaitedFor, scope);
    co_return true;
}

QCoro::Task<bool> IbusPoster::bringEngine(TaskScope scope) {
    engineLink_ = std::make_unique<IbusLink>(bus_.address(), &engine_);
    const bool isConnected =
        co_await await([this] { return engineLink_ && engineLink_->isConnected(); }, changeBound, scope);
    if (!isConnected) {
        co_return false;
    }
    const ibus::Component component{QStringLiteral("com.ostrand.tirra.IBus"),
                                    QStringLiteral("Lorvane"),
                                    {IbusEngine::name, QStringLiteral("Lorvane")}};
    const auto registering =
        engineLink_->call(QStringLiteral("RegisterComponent"), {ibus::inVariant(component)}, changeBound);
    const QDBusMessage registered = co_await registering.wait(scope);
    co_return isAnswer(registered);
}

QCoro::Task<bool> IbusPoster::await(std::function<bool()> condition, Duration bound, TaskScope scope) {
    const Instant deadline = clock_.now() + bound;
    while (!condition() && clock_.now() < deadline) {
        co_await sleep(clock_, betweenLooks, scope);
    }
    co_return condition();
}

QCoro::Task<std::optional<QString>> IbusPoster::engineInForce(TaskScope scope) {
    if (!bus_.isConnected()) {
        co_return std::nullopt;
    }
    const auto asking = bus_.link().property(QStringLiteral("GlobalEngine"), questionBound);
    const QDBusMessage answer = co_await asking.wait(scope);
    if (isAnswer(answer)) {
        co_return ibus::engineName(valueIn(answer)).value_or(QString());
    }
    // The daemon's answer when there is none.
    co_return answer.errorName() == QLatin1String("org.freedesktop.DBus.Error.Failed")
        ? std::optional(QString())
        : std::nullopt;
}

QCoro::Task<bool> IbusPoster::putInForce(QString engine, TaskScope scope) {
    if (!bus_.isConnected()) {
        co_return false;
    }
    const auto setting = bus_.link().call(QStringLiteral("SetGlobalEngine"), {engine}, changeBound);
    const QDBusMessage set = co_await setting.wait(scope);
    co_return isAnswer(set);
}

void IbusPoster::finish() {
    idle_.reset();
    if (isBorrowing_) {
        isBorrowing_ = false;
        beginGivingBack();
    }
}

void IbusPoster::beginGivingBack() {
    givingBack_ = startTask([this, users = usersEngine_](TaskScope scope) { return giveBack(users, scope); });
}

// The end of our connection takes the engine in force with it, so it is ended first; and a little later,
// since the daemon learns of it when it comes to that.
QCoro::Task<void> IbusPoster::giveBack(QString usersEngine, TaskScope scope) {
    auto inForce = co_await engineInForce(scope);
    engineLink_.reset();
    engine_.forget();
    const bool usersChoice = inForce && !inForce->isEmpty() && *inForce != IbusEngine::name;
    const QString wanted = usersChoice ? *inForce : usersEngine;
    const Instant deadline = clock_.now() + untilNoticed;
    while (inForce && !inForce->isEmpty() && clock_.now() < deadline) {
        co_await sleep(clock_, betweenLooks, scope);
        inForce = co_await engineInForce(scope);
    }
    const bool isSet = co_await putInForce(wanted, scope);
    if (!isSet) { // which a daemon may have done without saying so in time
        inForce = co_await engineInForce(scope);
    }
    if (isSet || inForce == wanted) {
        memory_.save(QString());
    } else {
        log_.diagLog(
            QStringLiteral("[tirra-type] the input method could not be given back to %1").arg(wanted));
    }
}

} // namespace lorvane
