// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/wlroots/IpcFrames.h"

#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSet>
#include <QStringList>
#include <QTemporaryDir>

#include <map>
#include <memory>

namespace lorvane {

/// The command socket of a compositor that keeps bindings as sway does, or answers as it is told to.
class ScriptedCompositor {
 public:
    ScriptedCompositor();

    [[nodiscard]] QString place() const { return folder_.filePath(QStringLiteral("sway-ipc.sock")); }
    void start();
    /// All connections end, and nobody listens any more.
    void stop();
    void hangUp();
    [[nodiscard]] bool hasClient() const { return client_ != nullptr; }

    /// Bytes as they are.
    void send(const QByteArray& bytes);
    void tell(std::uint32_t event, const QJsonObject& body);
    /// A binding runs: everyone who listens is told.
    void runBinding(const QString& command, const QStringList& modifiers = {}, int code = 0,
                    const QStringList& symbols = {});
    /// Each binding mode has bindings of its own.
    void enterMode(const QString& to);
    /// The key's binding runs, if there is one.
    bool press(int key, const QString& modifiers = {});
    bool release(int key, const QString& modifiers = {});

    /// Combinations with their flags, such as "--inhibited 105".
    QSet<QString> bound;
    QStringList commands;
    QString config;
    QString mode = QStringLiteral("default");
    bool knowsBindings = true;
    bool isSilent = false;

 private:
    void read();
    [[nodiscard]] QByteArray answer(const IpcMessage& question);
    [[nodiscard]] QJsonObject carryOut(const QString& command);
    void switchMode(const QString& to);
    bool runBound(const QString& flags, const QString& edge, int key, const QString& modifiers);

    QTemporaryDir folder_;
    std::unique_ptr<QLocalServer> server_;
    QLocalSocket* client_ = nullptr;
    IpcReader reader_;
    /// The bindings of the modes that are not in force.
    std::map<QString, QSet<QString>> inModes_;
};

} // namespace lorvane
