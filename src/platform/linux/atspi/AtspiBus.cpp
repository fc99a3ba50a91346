// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/AtspiBus.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QUuid>

namespace lorvane {

namespace {

const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString daemonName = QStringLiteral("org.freedesktop.DBus");
const QString daemonPath = QStringLiteral("/org/freedesktop/DBus");
constexpr Duration firstRetry = std::chrono::seconds(1);
constexpr Duration lastRetry = std::chrono::seconds(30);

int milliseconds(Duration bound) {
    return static_cast<int>(std::max<qint64>(1, std::chrono::ceil<std::chrono::milliseconds>(bound).count()));
}

AtspiReply::Outcome outcomeOf(const QDBusMessage& reply) {
    if (reply.type() == QDBusMessage::ReplyMessage) {
        return AtspiReply::Outcome::answered;
    }
    const QString error = reply.errorName();
    const bool silent = error == QLatin1String("org.freedesktop.DBus.Error.NoReply") ||
                        error == QLatin1String("org.freedesktop.DBus.Error.Timeout") ||
                        error == QLatin1String("org.freedesktop.DBus.Error.TimedOut");
    return silent ? AtspiReply::Outcome::timedOut : AtspiReply::Outcome::refused;
}

QString eventDetail(const QDBusMessage& message) { return message.arguments().value(0).toString(); }

} // namespace

AtspiBus::AtspiBus(Clock& clock, QDBusConnection session)
    : clock_(clock), session_(std::move(session)),
      connectionName_(QStringLiteral("lorvane-accessibility-") +
                      QUuid::createUuid().toString(QUuid::WithoutBraces)),
      connection_(connectionName_), retryDelay_(firstRetry) {
    askForAddress();
}

AtspiBus::~AtspiBus() { close(); }

void AtspiBus::askForAddress() {
    const auto ask =
        QDBusMessage::createMethodCall(QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                                       QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress"));
    auto* watcher = new QDBusPendingCallWatcher(session_.asyncCall(ask), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QString> address = *watcher;
        if (address.isError() || address.value().isEmpty()) {
            retryLater();
        } else {
            open(address.value());
        }
    });
}

void AtspiBus::open(const QString& address) {
    connection_ = QDBusConnection::connectToBus(address, connectionName_);
    if (!connection_.isConnected()) {
        close();
        retryLater();
        return;
    }
    follow(atspi::objectEvents, QStringLiteral("StateChanged"), {QStringLiteral("focused")},
           SLOT(stateChanged(QDBusMessage)));
    follow(atspi::objectEvents, QStringLiteral("StateChanged"), {QStringLiteral("active")},
           SLOT(stateChanged(QDBusMessage)));
    follow(atspi::windowEvents, QStringLiteral("Activate"), {}, SLOT(windowChanged(QDBusMessage)));
    follow(atspi::windowEvents, QStringLiteral("Deactivate"), {}, SLOT(windowChanged(QDBusMessage)));
    connection_.connect(daemonName, daemonPath, daemonName, QStringLiteral("NameOwnerChanged"), this,
                        SLOT(nameOwnerChanged(QDBusMessage)));
    connection_.connect(QString(), QString(), QStringLiteral("org.freedesktop.DBus.Local"),
                        QStringLiteral("Disconnected"), this, SLOT(disconnected()));
    registerEvents();
    connected_ = true;
    retryDelay_ = firstRetry;
    connectionChanged_.emit();
}

void AtspiBus::close() {
    connected_ = false;
    processes_.clear();
    connection_ = QDBusConnection(connectionName_);
    QDBusConnection::disconnectFromBus(connectionName_);
}

void AtspiBus::disconnected() {
    if (!connected_) {
        return;
    }
    close();
    connectionChanged_.emit();
    retryLater();
}

void AtspiBus::retryLater() {
    retry_ = clock_.after(retryDelay_, [this] { askForAddress(); });
    retryDelay_ = std::min(2 * retryDelay_, lastRetry);
}

void AtspiBus::follow(const QString& interface, const QString& member, const QStringList& match,
                      const char* slot) {
    connection_.connect(QString(), QString(), interface, member, match, QString(), this, slot);
}

void AtspiBus::registerEvents() {
    const QString state = QStringLiteral("Object:StateChanged:");
    for (const auto& event : {state + QStringLiteral("focused"), state + QStringLiteral("active"),
                              QStringLiteral("Window:Activate"), QStringLiteral("Window:Deactivate")}) {
        registerEvent(event, QString());
    }
}

void AtspiBus::registerEvent(const QString& event, const QString& bus) {
    auto message = QDBusMessage::createMethodCall(atspi::registryBus, atspi::registryPath, atspi::registryBus,
                                                  QStringLiteral("RegisterEvent"));
    message.setArguments({event, QStringList(), bus});
    connection_.asyncCall(message);
}

Handle AtspiBus::watchText(const QString& bus, std::function<void(const TextChange&)> observer) {
    const QString event = QStringLiteral("Object:TextChanged");
    const QString member = QStringLiteral("TextChanged");
    connection_.connect(bus, QString(), atspi::objectEvents, member, this, SLOT(textChanged(QDBusMessage)));
    registerEvent(event, bus);
    auto subscription = std::make_shared<Handle>(textEvents_.subscribe(std::move(observer)));
    return Handle([this, bus, event, member, subscription] {
        subscription->reset();
        connection_.disconnect(bus, QString(), atspi::objectEvents, member, this,
                               SLOT(textChanged(QDBusMessage)));
        auto message = QDBusMessage::createMethodCall(atspi::registryBus, atspi::registryPath,
                                                      atspi::registryBus, QStringLiteral("DeregisterEvent"));
        message.setArguments({event});
        connection_.asyncCall(message);
    });
}

Completion<AtspiReply> AtspiBus::call(const AccessibleRef& object, const QString& interface,
                                      const QString& member, const QVariantList& arguments, Duration bound) {
    auto message = QDBusMessage::createMethodCall(object.bus, object.path, interface, member);
    message.setArguments(arguments);
    return send(message, bound);
}

Completion<AtspiReply> AtspiBus::property(const AccessibleRef& object, const QString& interface,
                                          const QString& name, Duration bound) {
    auto message =
        QDBusMessage::createMethodCall(object.bus, object.path, propertiesInterface, QStringLiteral("Get"));
    message.setArguments({interface, name});
    return send(message, bound);
}

Completion<AtspiReply> AtspiBus::send(const QDBusMessage& message, Duration bound) {
    Completion<AtspiReply> answer;
    if (!connected_) {
        answer.complete(AtspiReply(AtspiReply::Outcome::refused, {}));
        return answer;
    }
    auto* watcher = new QDBusPendingCallWatcher(connection_.asyncCall(message, milliseconds(bound)), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answer] {
        watcher->deleteLater();
        const QDBusMessage reply = watcher->reply();
        answer.complete(AtspiReply(outcomeOf(reply), reply.arguments()));
    });
    return answer;
}

QCoro::Task<ProcessId> AtspiBus::processOf(QString bus, TaskScope scope) {
    if (const auto known = knownProcessOf(bus)) {
        co_return known;
    }
    const AccessibleRef daemon{daemonName, daemonPath};
    const QVariantList arguments{bus};
    const auto asked = call(daemon, daemonName, QStringLiteral("GetConnectionUnixProcessID"), arguments);
    const auto reply = co_await asked.wait(scope);
    const ProcessId process = reply.number().value_or(0);
    if (process != 0) {
        processes_.insert(bus, process);
    }
    co_return process;
}

void AtspiBus::learnProcess(const QString& bus) {
    if (processes_.contains(bus)) {
        return;
    }
    auto message = QDBusMessage::createMethodCall(daemonName, daemonPath, daemonName,
                                                  QStringLiteral("GetConnectionUnixProcessID"));
    message.setArguments({bus});
    auto* watcher = new QDBusPendingCallWatcher(connection_.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, bus] {
        watcher->deleteLater();
        const QDBusPendingReply<uint> process = *watcher;
        if (!process.isError()) {
            processes_.insert(bus, process.value());
        }
    });
}

QCoro::Task<std::vector<AccessibleRef>> AtspiBus::applications(TaskScope scope) {
    const AccessibleRef desktop{atspi::registryBus, atspi::rootPath};
    const auto asked = call(desktop, atspi::accessibleInterface, QStringLiteral("GetChildren"));
    const auto reply = co_await asked.wait(scope);
    auto found = reply.objects();
    if (!found) {
        co_return std::vector<AccessibleRef>();
    }
    co_return std::move(*found);
}

void AtspiBus::stateChanged(const QDBusMessage& message) {
    const QVariantList arguments = message.arguments();
    const bool now = arguments.value(1).toInt() != 0;
    const bool focus = eventDetail(message) == QLatin1String("focused");
    using Kind = FocusEvent::Kind;
    FocusEvent event;
    event.kind = focus ? (now ? Kind::focusGained : Kind::focusLost)
                       : (now ? Kind::windowActivated : Kind::windowDeactivated);
    event.source = {message.service(), message.path()};
    learnProcess(event.source.bus);
    focusEvents_.emit(event);
}

void AtspiBus::windowChanged(const QDBusMessage& message) {
    const bool active = message.member() == QLatin1String("Activate");
    FocusEvent event;
    event.kind = active ? FocusEvent::Kind::windowActivated : FocusEvent::Kind::windowDeactivated;
    event.source = {message.service(), message.path()};
    learnProcess(event.source.bus);
    focusEvents_.emit(event);
}

void AtspiBus::textChanged(const QDBusMessage& message) {
    const QVariantList arguments = message.arguments();
    TextChange change;
    change.source = {message.service(), message.path()};
    change.inserted = eventDetail(message).startsWith(QLatin1String("insert"));
    change.characters = arguments.value(2).toLongLong();
    const QVariant value = arguments.value(3);
    change.text = value.metaType() == QMetaType::fromType<QDBusVariant>()
                      ? value.value<QDBusVariant>().variant().toString()
                      : value.toString();
    textEvents_.emit(change);
}

void AtspiBus::nameOwnerChanged(const QDBusMessage& message) {
    const QString name = message.arguments().value(0).toString();
    const bool gone = message.arguments().value(2).toString().isEmpty();
    if (gone) {
        processes_.remove(name);
        gone_.emit(name);
    }
    if (!gone && name == atspi::registryBus && connected_) {
        // A registry that was started anew knows of no listener.
        registerEvents();
    }
}

} // namespace lorvane
