// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/GlobalShortcuts.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <utility>

namespace lorvane {

namespace {

const auto service = QStringLiteral("org.kde.kglobalaccel");
const auto compositor = QStringLiteral("org.kde.KWin");
const auto object = QStringLiteral("/kglobalaccel");
const auto interface = QStringLiteral("org.kde.KGlobalAccel");
const auto componentInterface = QStringLiteral("org.kde.kglobalaccel.Component");
const auto label = QStringLiteral("Lorvane");

// KGlobalAccel's flags: the shortcut is for a program that runs, and is what this call says and not what the
// settings remember.
constexpr unsigned setPresent = 2;
constexpr unsigned noAutoloading = 4;
constexpr int mostWaitAtEnd = 200; // milliseconds

QStringList actionId(const GlobalShortcut& shortcut) {
    return {GlobalShortcuts::component, shortcut.name, label, shortcut.label};
}

} // namespace

const QString GlobalShortcuts::component = QStringLiteral("lorvane");

GlobalShortcuts::GlobalShortcuts(QDBusConnection session, DiagnosticLog& log, QStringList ours)
    : session_(std::move(session)), log_(log), ours_(std::move(ours)) {
    qDBusRegisterMetaType<QList<int>>();
    const QString path = QStringLiteral("/component/") + component;
    session_.connect(service, path, componentInterface, QStringLiteral("globalShortcutPressed"), this,
                     SLOT(onPressed(QString, QString, qlonglong)));
    session_.connect(service, path, componentInterface, QStringLiteral("globalShortcutReleased"), this,
                     SLOT(onReleased(QString, QString, qlonglong)));
    followOwner(service);
    followOwner(compositor);
}

GlobalShortcuts::~GlobalShortcuts() {
    const QStringList names = taken_.keys();
    for (const QString& name : names) {
        letGo(name);
    }
    if (!names.isEmpty() && isThere_) {
        // The process may end right after, with what was sent still in its buffers.
        session_.call(call(QStringLiteral("allComponents")), QDBus::Block, mostWaitAtEnd);
    }
}

void GlobalShortcuts::followOwner(const QString& name) {
    auto* const watcher =
        new QDBusServiceWatcher(name, session_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, [this, name] { askOwner(name); });
    askOwner(name);
}

// Qt does not always hand news and answers over in the order of the bus, and a service that takes over both
// names gives one up before the other: so the news only make us ask, and the last answer counts.
void GlobalShortcuts::askOwner(const QString& name) {
    auto question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetNameOwner"));
    question << name;
    const std::uint64_t serial = ++lastSerial_;
    ownerQuestions_.insert(name, serial);
    ask(question, [this, name, serial](const QDBusMessage& answer) {
        if (ownerQuestions_.value(name) == serial) {
            const bool hasOwner = answer.type() == QDBusMessage::ReplyMessage;
            ownerIs(name, hasOwner ? answer.arguments().value(0).toString() : QString());
        }
    });
}

void GlobalShortcuts::ownerIs(const QString& name, const QString& owner) {
    owners_.insert(name, owner);
    const bool isThere =
        !owners_.value(service).isEmpty() && owners_.value(service) == owners_.value(compositor);
    if (isThere == isThere_) {
        return;
    }
    isThere_ = isThere;
    isTidy_ = false;
    if (isThere_ && !taken_.isEmpty()) {
        tidy();
        const QStringList names = taken_.keys();
        for (const QString& taken : names) {
            request(taken);
        }
    }
    changed_.emit();
}

/// What an earlier run has left is let go. Not before something is taken: who only looks what is there, as
/// the doctor does, must leave those of the program that runs alone.
void GlobalShortcuts::tidy() {
    if (std::exchange(isTidy_, true)) {
        return;
    }
    for (const QString& name : ours_) {
        if (!taken_.contains(name)) {
            unregister(name);
        }
    }
}

void GlobalShortcuts::take(const GlobalShortcut& shortcut) {
    taken_.insert(shortcut.name, {shortcut, 0, std::nullopt, false});
    if (isThere_) {
        tidy();
        request(shortcut.name);
    }
}

void GlobalShortcuts::letGo(const QString& name) {
    if (taken_.remove(name) > 0 && isThere_) {
        unregister(name);
    }
}

std::optional<QString> GlobalShortcuts::refusalOf(const QString& name) const {
    const auto found = taken_.find(name);
    return found == taken_.end() ? std::nullopt : found->refusedFor;
}

void GlobalShortcuts::request(const QString& name) {
    Taken& taken = taken_[name];
    taken.serial = ++lastSerial_;
    taken.refusedFor.reset();
    taken.isInForce = false;
    auto enter = call(QStringLiteral("doRegister"));
    enter << actionId(taken.shortcut);
    session_.send(enter);
    auto set = call(QStringLiteral("setShortcut"));
    set << actionId(taken.shortcut) << QVariant::fromValue(taken.shortcut.keys)
        << (setPresent | noAutoloading);
    ask(set,
        [this, name, serial = taken.serial](const QDBusMessage& answer) { answered(name, serial, answer); });
}

void GlobalShortcuts::answered(const QString& name, std::uint64_t serial, const QDBusMessage& answer) {
    const auto found = taken_.find(name);
    if (found == taken_.end() || found->serial != serial) {
        return;
    }
    const int wanted = found->shortcut.keys.value(0);
    const bool isList =
        answer.type() == QDBusMessage::ReplyMessage && answer.signature() == QLatin1String("ai");
    if (isList && qdbus_cast<QList<int>>(answer.arguments().at(0)).contains(wanted)) {
        return confirm(name);
    }
    if (!isList) {
        log_.diagLog(
            QStringLiteral("[tirra-kde] the shortcut %1 got no answer: %2").arg(name, answer.errorMessage()));
    }
    unregister(name);
    auto who = call(QStringLiteral("action"));
    who << wanted;
    ask(who, [this, name, serial](const QDBusMessage& holder) {
        const auto still = taken_.find(name);
        if (still != taken_.end() && still->serial == serial) {
            // The unique names of component and action, then the ones for the user.
            const QStringList words = holder.arguments().value(0).toStringList();
            const QString said =
                QStringLiteral("%1: %2").arg(words.value(2), words.value(3)); // NOLINT(*-magic-numbers)
            refuse(name, words.size() > 3 ? said : QString());
        }
    });
}

bool GlobalShortcuts::isInForce(const QString& name) const {
    const auto found = taken_.find(name);
    return isThere_ && found != taken_.end() && found->isInForce;
}

void GlobalShortcuts::confirm(const QString& name) {
    if (!std::exchange(taken_[name].isInForce, true)) {
        changed_.emit();
    }
}

void GlobalShortcuts::refuse(const QString& name, const QString& holder) {
    taken_[name].refusedFor = holder;
    log_.diagLog(QStringLiteral("[tirra-kde] the shortcut %1 is taken by \"%2\"").arg(name, holder));
    changed_.emit();
}

void GlobalShortcuts::unregister(const QString& name) {
    auto leave = call(QStringLiteral("unregister"));
    leave << component << name;
    session_.send(leave);
}

void GlobalShortcuts::onPressed(const QString& of, const QString& action, qlonglong /*time*/) {
    if (of == component && taken_.contains(action)) {
        confirm(action); // whose answer may have gone astray
        edge_.emit(action, true);
    }
}

void GlobalShortcuts::onReleased(const QString& of, const QString& action, qlonglong /*time*/) {
    if (of == component && taken_.contains(action)) {
        edge_.emit(action, false);
    }
}

void GlobalShortcuts::ask(const QDBusMessage& question, Answer answer) {
    auto* const watcher = new QDBusPendingCallWatcher(session_.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answer = std::move(answer)] {
        watcher->deleteLater();
        answer(watcher->reply());
    });
}

QDBusMessage GlobalShortcuts::call(const QString& method) {
    auto message = QDBusMessage::createMethodCall(service, object, interface, method);
    message.setAutoStartService(false);
    return message;
}

} // namespace lorvane
