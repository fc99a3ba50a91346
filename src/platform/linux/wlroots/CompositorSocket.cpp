// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/CompositorSocket.h"

#include <QDir>

#include <utility>

namespace lorvane {

namespace {

constexpr qsizetype longestCommands = 32768;
/// A compositor that leaves so many questions open answers none any more.
constexpr std::size_t mostOpen = 256;
/// Milliseconds.
constexpr int longestSettling = 200;

} // namespace

CompositorSocket::CompositorSocket(Clock& clock, DiagnosticLog& log, std::function<QStringList()> places)
    : clock_(clock), log_(log), places_(std::move(places)) {
    QObject::connect(&socket_, &QLocalSocket::connected, &socket_, [this] { connected(); });
    QObject::connect(&socket_, &QLocalSocket::readyRead, &socket_, [this] { read(); });
    QObject::connect(&socket_, &QLocalSocket::disconnected, &socket_,
                     [this] { lose(QStringLiteral("it hung up")); });
    QObject::connect(&socket_, &QLocalSocket::errorOccurred, &socket_, [this] {
        if (!wasConnected_) {
            retry_ = clock_.after(Duration::zero(), [this] { tryNext(); });
        }
    });
}

CompositorSocket::~CompositorSocket() {
    socket_.disconnect();
    socket_.abort();
}

QStringList CompositorSocket::standardPlaces() {
    QStringList places;
    for (const char* const variable : {"SWAYSOCK", "I3SOCK"}) {
        const QString place = qEnvironmentVariable(variable);
        if (!place.isEmpty()) {
            places.append(place);
        }
    }
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (folder.isEmpty() || places.isEmpty()) {
        return places;
    }
    const auto newestFirst =
        QDir(folder).entryInfoList({QStringLiteral("sway-ipc.*.sock")}, QDir::System, QDir::Time);
    for (const QFileInfo& file : newestFirst) {
        places.append(file.filePath());
    }
    places.removeDuplicates();
    return places;
}

void CompositorSocket::start() {
    untried_ = places_();
    tryNext();
}

void CompositorSocket::tryNext() {
    if (untried_.isEmpty()) {
        retryLater();
        return;
    }
    socket_.abort();
    socket_.connectToServer(untried_.takeFirst());
}

void CompositorSocket::retryLater() {
    retry_ = clock_.after(retryPeriod, [this] { start(); });
}

void CompositorSocket::connected() {
    retry_.reset();
    wasConnected_ = true;
    reader_ = IpcReader();
    connected_.emit();
}

void CompositorSocket::lose(const QString& reason) {
    if (!std::exchange(wasConnected_, false)) {
        return;
    }
    log_.diagLog(QStringLiteral("[tirra-wayland] the compositor's command socket is gone: ") + reason);
    open_.clear();
    socket_.abort();
    lost_.emit();
    retryLater();
}

void CompositorSocket::request(std::uint32_t type, const QByteArray& payload, Reply reply) {
    if (!wasConnected_) {
        return;
    }
    if (open_.size() >= mostOpen) {
        lose(QStringLiteral("it does not answer"));
        return;
    }
    open_.push_back({type, std::move(reply)});
    socket_.write(encodeIpc({type, payload}));
    // Not when the event loop comes round to it: the next key may be down by then.
    socket_.flush();
}

void CompositorSocket::run(const QStringList& commands, const Reply& reply) {
    QByteArray payload;
    for (const QString& command : commands) {
        const QByteArray next = command.toUtf8();
        if (!payload.isEmpty() && payload.size() + next.size() > longestCommands) {
            request(ipcType::runCommand, std::exchange(payload, {}), reply);
        }
        payload += (payload.isEmpty() ? "" : ";") + next;
    }
    if (!payload.isEmpty()) {
        request(ipcType::runCommand, payload, reply);
    }
}

void CompositorSocket::forgetReplies() {
    for (Open& question : open_) {
        question.reply = nullptr;
    }
}

void CompositorSocket::settle() {
    while (wasConnected_ && !open_.empty() && socket_.waitForReadyRead(longestSettling)) {
    }
}

void CompositorSocket::read() {
    reader_.feed(socket_.readAll());
    while (wasConnected_) {
        const auto message = reader_.next();
        if (!message) {
            break;
        }
        handle(*message);
    }
    if (reader_.isBroken()) {
        lose(QStringLiteral("it says what nobody understands"));
    }
}

void CompositorSocket::handle(const IpcMessage& message) {
    QJsonParseError error{};
    const QJsonDocument body = QJsonDocument::fromJson(message.payload, &error);
    if (message.isEvent()) {
        if (body.isObject()) {
            events_.emit({message.type, body.object()});
        }
        return;
    }
    if (open_.empty() || open_.front().type != message.type || error.error != QJsonParseError::NoError) {
        lose(QStringLiteral("its answers fit no question"));
        return;
    }
    const Reply reply = std::exchange(open_.front().reply, nullptr);
    open_.pop_front();
    if (reply) {
        reply(body);
    }
}

} // namespace lorvane
