// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/IbusPoster.h"

#include "platform/linux/ibus/IbusValues.h"

#include <QDBusObjectPath>

namespace lorvane {

namespace {

constexpr Duration questionBound = std::chrono::milliseconds(140);
/// The daemon asks the engines themselves while it changes them.
constexpr Duration changeBound = std::chrono::milliseconds(500);
/// The focus is told anew when an engine comes into force.
constexpr Duration fieldAwaitedFor = std::chrono::milliseconds(200);
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
    : clock_(clock), log_(log), memory_(std::move(memory)), bus_(std::move(places), engine_), preedit_(bus_) {
    engineChanged_ = engine_.onChange([this] {
        if (fieldAwaited_ && engine_.hasField()) {
            fieldAwaited_->complete(true);
        }
    });
    busChanged_ = bus_.onChange([this] { busChanged(); });
}

IbusPoster::~IbusPoster() {
    if ((isBorrowing_ || givingBack_.isRunning()) && bus_.isConnected()) {
        auto back = QDBusMessage::createMethodCall(ibus::service, ibus::path, ibus::service,
                                                   QStringLiteral("SetGlobalEngine"));
        back << usersEngine_;
        bus_.send(back);
    }
}

void IbusPoster::busChanged() {
    isRegistered_ = false;
    isBorrowing_ = false;
    engine_.forget();
    if (!bus_.isConnected()) {
        return;
    }
    preedit_.start();
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
    const auto asking = bus_.call(QStringLiteral("Get"),
                                  {ibus::service, QStringLiteral("CurrentInputContext")}, questionBound);
    const QDBusMessage answer = co_await asking.wait(scope);
    const QString context = valueIn(answer).value<QDBusObjectPath>().path();
    co_return !isAnswer(answer) || context.isEmpty() || preedit_.isComposingIn(context);
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
    if (!engine_.hasField() || engine_.isSecret()) {
        co_return PostOutcome::refused;
    }
    bus_.send(engine_.commit(text));
    co_return PostOutcome::posted;
}

QCoro::Task<bool> IbusPoster::borrow(TaskScope scope) {
    const bool isKnown = co_await registerEngine(scope);
    const bool composing = co_await isComposing(scope);
    if (!isKnown || composing) {
        co_return false;
    }
    const auto users = co_await engineInForce(scope);
    // Without an engine of the user's there would be nothing to give back.
    if (!users || users->isEmpty()) {
        co_return false;
    }
    if (*users != IbusEngine::name) {
        usersEngine_ = *users;
        memory_.save(usersEngine_);
    }
    isBorrowing_ = true;
    const bool inForce = co_await putInForce(IbusEngine::name, scope);
    const bool hasField = inForce && co_await awaitField(scope);
    if (!hasField) {
        log_.diagLog(QStringLiteral("[tirra-type] no field listens to the input method"));
        finish();
    }
    co_return hasField;
}

QCoro::Task<bool> IbusPoster::registerEngine(TaskScope scope) {
    if (!isRegistered_) {
        const ibus::Component component{QStringLiteral("com.ostrand.tirra.IBus"),
                                        QStringLiteral("Lorvane"),
                                        {IbusEngine::name, QStringLiteral("Lorvane")}};
        const auto registering =
            bus_.call(QStringLiteral("RegisterComponent"), {ibus::inVariant(component)}, changeBound);
        const QDBusMessage registered = co_await registering.wait(scope);
        isRegistered_ = isAnswer(registered);
    }
    co_return isRegistered_;
}

QCoro::Task<bool> IbusPoster::awaitField(TaskScope scope) {
    if (engine_.hasField()) {
        co_return true;
    }
    const Completion<bool> awaited;
    fieldAwaited_ = awaited;
    const Handle bound = clock_.after(fieldAwaitedFor, [awaited] { awaited.complete(false); });
    const bool hasField = co_await awaited.wait(scope);
    fieldAwaited_.reset();
    co_return hasField;
}

QCoro::Task<std::optional<QString>> IbusPoster::engineInForce(TaskScope scope) {
    const auto asking =
        bus_.call(QStringLiteral("Get"), {ibus::service, QStringLiteral("GlobalEngine")}, questionBound);
    const QDBusMessage answer = co_await asking.wait(scope);
    if (!isAnswer(answer)) {
        co_return std::nullopt;
    }
    co_return ibus::engineName(valueIn(answer)).value_or(QString());
}

QCoro::Task<bool> IbusPoster::putInForce(QString engine, TaskScope scope) {
    const auto setting = bus_.call(QStringLiteral("SetGlobalEngine"), {engine}, changeBound);
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

QCoro::Task<void> IbusPoster::giveBack(QString usersEngine, TaskScope scope) {
    const auto inForce = co_await engineInForce(scope);
    // Another one was chosen by the user meanwhile.
    bool isDone = inForce && !inForce->isEmpty() && *inForce != IbusEngine::name;
    if (!isDone) {
        isDone = co_await putInForce(usersEngine, scope);
    }
    if (isDone) {
        memory_.save(QString());
    } else {
        log_.diagLog(
            QStringLiteral("[tirra-type] the input method could not be given back to %1").arg(usersEngine));
    }
}

} // namespace lorvane
