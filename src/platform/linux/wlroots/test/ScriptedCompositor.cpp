// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/test/ScriptedCompositor.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <utility>

namespace lorvane {

ScriptedCompositor::ScriptedCompositor() { start(); }

void ScriptedCompositor::start() {
    server_ = std::make_unique<QLocalServer>();
    QLocalServer::removeServer(place());
    server_->listen(place());
    QObject::connect(server_.get(), &QLocalServer::newConnection, server_.get(), [this] {
        client_ = server_->nextPendingConnection();
        reader_ = IpcReader();
        QLocalSocket* const client = client_;
        QObject::connect(client, &QLocalSocket::readyRead, server_.get(), [this, client] {
            if (client == client_) {
                read();
            }
        });
        QObject::connect(client, &QLocalSocket::disconnected, server_.get(), [this, client] {
            if (client == client_) {
                client_ = nullptr;
            }
        });
    });
}

void ScriptedCompositor::stop() {
    hangUp();
    server_.reset();
}

void ScriptedCompositor::hangUp() {
    if (client_ != nullptr) {
        client_->abort();
        client_ = nullptr;
    }
}

void ScriptedCompositor::send(const QByteArray& bytes) {
    if (client_ != nullptr) {
        client_->write(bytes);
        client_->flush();
    }
}

void ScriptedCompositor::tell(std::uint32_t event, const QJsonObject& body) {
    send(encodeIpc({event, QJsonDocument(body).toJson(QJsonDocument::Compact)}));
}

void ScriptedCompositor::runBinding(const QString& command, const QStringList& modifiers, int code,
                                    const QStringList& symbols) {
    const QJsonObject binding{{"command", command},
                              {"event_state_mask", QJsonArray::fromStringList(modifiers)},
                              {"input_code", code},
                              {"symbols", QJsonArray::fromStringList(symbols)},
                              {"input_type", "keyboard"}};
    tell(ipcType::bindingEvent, {{"change", "run"}, {"binding", binding}});
}

bool ScriptedCompositor::press(int key, const QString& modifiers) {
    return runBound(QStringLiteral("--inhibited"), QStringLiteral("down"), key, modifiers);
}

bool ScriptedCompositor::release(int key, const QString& modifiers) {
    return runBound(QStringLiteral("--release --locked --inhibited"), QStringLiteral("up"), key, modifiers);
}

bool ScriptedCompositor::runBound(const QString& flags, const QString& edge, int key,
                                  const QString& modifiers) {
    if (!bound.contains(flags + ' ' + modifiers + QString::number(key))) {
        return false;
    }
    runBinding(QStringLiteral("nop lorvane-%1-%2-0").arg(edge).arg(key), {}, key);
    return true;
}

void ScriptedCompositor::read() {
    reader_.feed(client_->readAll());
    while (const auto question = reader_.next()) {
        const QByteArray body = answer(*question);
        if (!isSilent) {
            send(encodeIpc({question->type, body}));
        }
    }
}

QByteArray ScriptedCompositor::answer(const IpcMessage& question) {
    switch (question.type) {
    case ipcType::getConfig:
        return QJsonDocument(QJsonObject{{"config", config}}).toJson();
    case ipcType::getBindingState:
        return QJsonDocument(QJsonObject{{"name", mode}}).toJson();
    case ipcType::runCommand: {
        QJsonArray results;
        for (const QString& command : QString::fromUtf8(question.payload).split(';')) {
            results.append(carryOut(command));
        }
        return QJsonDocument(results).toJson();
    }
    default:
        return R"({"success": true})";
    }
}

void ScriptedCompositor::switchMode(const QString& to) {
    inModes_[mode] = bound;
    mode = to;
    bound = std::exchange(inModes_[to], {});
}

void ScriptedCompositor::enterMode(const QString& to) {
    switchMode(to);
    tell(ipcType::modeEvent, {{"change", to}});
}

QJsonObject ScriptedCompositor::carryOut(const QString& command) {
    commands.append(command);
    if (command.startsWith(QLatin1String("mode "))) {
        QString to = command.mid(6).chopped(1); // in quotes
        switchMode(to.replace(QLatin1String("\\\""), QLatin1String("\"")));
        return {{"success", true}};
    }
    if (!knowsBindings) {
        return {{"success", false}, {"parse_error", true}, {"error", "Unknown/invalid command"}};
    }
    QStringList words = command.split(' ');
    const bool adds = words.takeFirst() == QLatin1String("bindcode");
    words.removeAll(QStringLiteral("--no-warn"));
    const qsizetype name = words.indexOf(QStringLiteral("nop"));
    const QString what = words.mid(0, name).join(' ');
    if (adds) {
        bound.insert(what);
        return {{"success", true}};
    }
    if (bound.remove(what)) {
        return {{"success", true}};
    }
    return {{"success", false}, {"parse_error", false}, {"error", "Could not find binding"}};
}

} // namespace lorvane
