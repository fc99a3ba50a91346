// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/gnome/RemoteDesktopKeys.h"

#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>

#include <memory>
#include <utility>

namespace lorvane {

namespace {

const QString serviceName = QStringLiteral("org.gnome.Mutter.RemoteDesktop");
const QString managerPath = QStringLiteral("/org/gnome/Mutter/RemoteDesktop");
const QString sessionInterface = QStringLiteral("org.gnome.Mutter.RemoteDesktop.Session");
constexpr int answerBound = 500; // milliseconds
/// Until then a session that comes late is known.
constexpr int lateBound = 60'000; // milliseconds

/// Whether somebody waits, for who cannot know whether that one still exists.
struct Waiting {
    Waiting() = default;
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
    ~Waiting() { *still = false; }
    const std::shared_ptr<bool> still = std::make_shared<bool>(true);
};

bool isAnswer(const QDBusMessage& message) { return message.type() == QDBusMessage::ReplyMessage; }

/// A Shell that is busy has not refused.
bool isRefusal(const QDBusMessage& message) {
    return message.errorName() != QLatin1String("org.freedesktop.DBus.Error.NoReply");
}

QString sessionOf(const QDBusMessage& created) {
    return isAnswer(created) ? created.arguments().value(0).value<QDBusObjectPath>().path() : QString();
}

} // namespace

RemoteDesktopKeys::RemoteDesktopKeys(QDBusConnection session, Clock& clock, DiagnosticLog& log)
    : ChordKeyboard(clock), bus_(std::move(session)), clock_(clock), log_(log),
      service_(bus_, serviceName, [this] {
          isRefused_ = false;
          session_.clear();
      }) {}

RemoteDesktopKeys::~RemoteDesktopKeys() { close(); }

QCoro::Task<bool> RemoteDesktopKeys::open(TaskScope scope) {
    if (!session_.isEmpty() || !isOffered()) {
        co_return !session_.isEmpty();
    }
    const QDBusMessage created = co_await createSession(scope);
    const QString path = sessionOf(created);
    if (path.isEmpty()) {
        isRefused_ = isRefusal(created);
        log_.diagLog(
            QStringLiteral("[tirra-keys] no session of the remote desktop: %1").arg(created.errorMessage()));
        co_return false;
    }
    session_ = path;
    bus_.connect(serviceName, path, sessionInterface, QStringLiteral("Closed"), this, SLOT(closedByShell()));
    const auto starting = call(path, sessionInterface, QStringLiteral("Start"));
    const QDBusMessage started = co_await starting.wait(scope);
    if (!isAnswer(started)) {
        isRefused_ = isRefusal(started);
        log_.diagLog(QStringLiteral("[tirra-keys] the session of the remote desktop did not start: %1")
                         .arg(started.errorMessage()));
        close();
    }
    co_return session_ == path;
}

QCoro::Task<QDBusMessage> RemoteDesktopKeys::createSession(TaskScope scope) {
    auto message = QDBusMessage::createMethodCall(serviceName, managerPath, serviceName,
                                                  QStringLiteral("CreateSession"));
    message.setAutoStartService(false);
    const Waiting waiting;
    const Completion<QDBusMessage> answer;
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message, lateBound), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, watcher, answer, still = waiting.still] {
                watcher->deleteLater();
                if (*still) {
                    answer.complete(watcher->reply());
                } else if (const QString path = sessionOf(watcher->reply()); !path.isEmpty()) {
                    stop(path);
                }
            });
    const Handle limit = clock_.after(std::chrono::milliseconds(answerBound), [answer] {
        answer.complete(QDBusMessage::createError(QDBusError::NoReply, QStringLiteral("no answer")));
    });
    QDBusMessage created = co_await answer.wait(scope);
    co_return created;
}

QCoro::Task<KeysOutcome> RemoteDesktopKeys::move(int inputCode, bool down, TaskScope scope) {
    if (session_.isEmpty()) {
        co_return KeysOutcome::notPosted;
    }
    const QVariantList arguments{static_cast<uint>(inputCode), down};
    const auto moving = call(session_, sessionInterface, QStringLiteral("NotifyKeyboardKeycode"), arguments);
    const QDBusMessage moved = co_await moving.wait(scope);
    if (isAnswer(moved)) {
        co_return KeysOutcome::posted;
    }
    co_return isRefusal(moved) ? KeysOutcome::notPosted : KeysOutcome::unknown;
}

void RemoteDesktopKeys::close() {
    if (const QString path = std::exchange(session_, QString()); !path.isEmpty()) {
        bus_.disconnect(serviceName, path, sessionInterface, QStringLiteral("Closed"), this,
                        SLOT(closedByShell()));
        stop(path);
    }
}

void RemoteDesktopKeys::stop(const QString& path) {
    const auto stopping = call(path, sessionInterface, QStringLiteral("Stop"));
    Q_UNUSED(stopping)
}

void RemoteDesktopKeys::closedByShell() { session_.clear(); }

Completion<QDBusMessage> RemoteDesktopKeys::call(const QString& path, const QString& interface,
                                                 const QString& method, const QVariantList& arguments) {
    auto message = QDBusMessage::createMethodCall(serviceName, path, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    Completion<QDBusMessage> answer;
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message, answerBound), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answer] {
        watcher->deleteLater();
        answer.complete(watcher->reply());
    });
    return answer;
}

} // namespace lorvane
