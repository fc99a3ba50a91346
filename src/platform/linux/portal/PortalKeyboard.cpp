// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/portal/PortalKeyboard.h"

#include <QDBusObjectPath>

#include <utility>

namespace lorvane {

namespace {

const QString remoteInterface = QStringLiteral("org.freedesktop.portal.RemoteDesktop");
const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");
/// The first version that gives tokens.
constexpr uint tokenVersion = 2;
constexpr uint keyboardDevice = 1;
/// The permission lasts until the user takes it back.
constexpr uint persistent = 2;

QVariant pathOf(const QString& session) { return QVariant::fromValue(QDBusObjectPath(session)); }

} // namespace

PortalKeyboard::PortalKeyboard(const Foundation& foundation, const QDBusConnection& session)
    : ChordKeyboard(foundation.clock), preferences_(foundation.preferences), log_(foundation.log),
      requests_(session, foundation.clock) {
    connect(&requests_, &PortalRequests::ownerChanged, this, [this](bool isThere) {
        version_ = 0;
        session_.clear();
        if (isThere) {
            lookForPortal();
        }
    });
    lookForPortal();
}

PortalKeyboard::~PortalKeyboard() { close(); }

void PortalKeyboard::lookForPortal() {
    looking_ = startTask([this](TaskScope scope) -> QCoro::Task<void> {
        const QString interface = remoteInterface;
        version_ = co_await requests_.version(interface, scope);
    });
}

bool PortalKeyboard::isOffered() const { return obstacle().isEmpty(); }

QString PortalKeyboard::obstacle() const {
    if (version_ < tokenVersion) {
        return QStringLiteral("the desktop portal posts no keys without asking each time");
    }
    return preferences_.get(remoteDesktopToken).isEmpty()
               ? QStringLiteral("the desktop portal has not been allowed to post keys")
               : QString();
}

QCoro::Task<bool> PortalKeyboard::ask(TaskScope scope) {
    if (looking_.isRunning() || version_ == 0) {
        const QString interface = remoteInterface;
        version_ = co_await requests_.version(interface, scope);
    }
    if (version_ < tokenVersion) {
        co_return false;
    }
    const bool opened = co_await openWithin(dialogPatience, scope);
    close();
    co_return opened&& isOffered();
}

QCoro::Task<bool> PortalKeyboard::open(TaskScope scope) {
    if (!session_.isEmpty() || !isOffered()) {
        co_return !session_.isEmpty();
    }
    const bool opened = co_await openWithin(patience, scope);
    co_return opened;
}

QCoro::Task<bool> PortalKeyboard::openWithin(Duration startPatience, TaskScope scope) {
    const QString session = co_await createSession(scope);
    if (session.isEmpty()) {
        co_return false;
    }
    session_ = session;
    requests_.bus().connect(PortalRequests::serviceName(), session, sessionInterface,
                            QStringLiteral("Closed"), this, SLOT(closedByDesktop(QDBusMessage)));
    const bool started = co_await start(session, startPatience, scope);
    if (!started) {
        close();
    }
    co_return started&& session_ == session;
}

QCoro::Task<QString> PortalKeyboard::createSession(TaskScope scope) {
    const QString interface = remoteInterface;
    const PortalAnswer created = co_await requests_.createSession(interface, patience, scope);
    const QString session = PortalRequests::sessionOf(created);
    if (session.isEmpty()) {
        (void)refuse(created.problem);
        co_return QString();
    }
    co_return session;
}

// A token that the portal does not take any more brings up its dialog, and so no answer in the time that a
// session without a question takes.
QCoro::Task<bool> PortalKeyboard::start(QString session, Duration startPatience, TaskScope scope) {
    QVariantMap choice{{QStringLiteral("types"), keyboardDevice},
                       {QStringLiteral("persist_mode"), persistent}};
    if (const QString token = preferences_.get(remoteDesktopToken); !token.isEmpty()) {
        choice.insert(QStringLiteral("restore_token"), token);
    }
    const QString interface = remoteInterface;
    const QString select = QStringLiteral("SelectDevices");
    const QVariantList toSelect{pathOf(session)};
    const PortalAnswer selected =
        co_await requests_.request(interface, select, toSelect, choice, patience, scope);
    if (!selected.isGranted()) {
        co_return refuse(selected.problem);
    }
    const QString begin = QStringLiteral("Start");
    const QVariantList toStart{pathOf(session), QString()};
    const QVariantMap none;
    const PortalAnswer started =
        co_await requests_.request(interface, begin, toStart, none, startPatience, scope);
    const uint devices = started.results.value(QStringLiteral("devices")).toUInt();
    if (!started.isGranted() || (devices & keyboardDevice) == 0) {
        preferences_.remove(remoteDesktopToken);
        co_return refuse(started.isGranted() ? QStringLiteral("no keyboard was allowed") : started.problem);
    }
    storeToken(started.results);
    co_return true;
}

// A token serves once; each start gives the next one.
void PortalKeyboard::storeToken(const QVariantMap& results) {
    const QString token = results.value(QStringLiteral("restore_token")).toString();
    if (token.isEmpty()) {
        preferences_.remove(remoteDesktopToken);
    } else {
        preferences_.set(remoteDesktopToken, token);
    }
}

bool PortalKeyboard::refuse(const QString& problem) {
    log_.diagLog(QStringLiteral("[tirra-keys] the portal posts no keys: %1").arg(problem));
    return false;
}

QCoro::Task<KeysOutcome> PortalKeyboard::move(int inputCode, bool down, TaskScope scope) {
    if (session_.isEmpty()) {
        co_return KeysOutcome::notPosted;
    }
    const QVariantList arguments{pathOf(session_), QVariantMap(), inputCode, down ? 1U : 0U};
    const auto moving = requests_.call(PortalRequests::objectPath(), remoteInterface,
                                       QStringLiteral("NotifyKeyboardKeycode"), arguments);
    const QDBusMessage moved = co_await moving.wait(scope);
    if (moved.type() == QDBusMessage::ReplyMessage) {
        co_return KeysOutcome::posted;
    }
    const bool isSilence = moved.errorName() == QLatin1String("org.freedesktop.DBus.Error.NoReply");
    co_return isSilence ? KeysOutcome::unknown : KeysOutcome::notPosted;
}

void PortalKeyboard::close() {
    if (const QString session = std::exchange(session_, QString()); !session.isEmpty()) {
        requests_.bus().disconnect(PortalRequests::serviceName(), session, sessionInterface,
                                   QStringLiteral("Closed"), this, SLOT(closedByDesktop(QDBusMessage)));
        requests_.closeSession(session);
    }
}

void PortalKeyboard::closedByDesktop(const QDBusMessage& signal) {
    if (signal.path() == session_) {
        session_.clear();
    }
}

} // namespace lorvane
