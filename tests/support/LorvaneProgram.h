// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/Wait.h"

#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

namespace lorvane {

// The program under test, as a user starts it: a process of its own with folders of its own in the virtual
// desktop, ready when it is handed out and ended with this object. Throws std::runtime_error with its output
// when it does not come up.
class LorvaneProgram {
 public:
    // `backend`: the address it is told to use; empty for the backend that comes with it. The first run is
    // over unless the preferences say otherwise.
    explicit LorvaneProgram(const QString& backend = {}, const QJsonObject& preferences = {});
    ~LorvaneProgram();
    LorvaneProgram(const LorvaneProgram&) = delete;
    LorvaneProgram& operator=(const LorvaneProgram&) = delete;

    qint64 pid() const { return process_.processId(); }
    // A property of the control interface: "Phase", "Notice", "Severity".
    QString property(const QString& name) const;
    QString phase() const { return property(QStringLiteral("Phase")); }
    bool waitForPhase(const QString& wanted, std::chrono::milliseconds bound = generously) const;
    // Every phase since the start, in order, each change once; notices as "notice: text".
    QStringList phases() const { return phases_; }
    bool waitForPhases(const QStringList& wanted, std::chrono::milliseconds bound = generously) const;
    void forgetPhases();
    // When the last of `phases()` was told.
    std::chrono::steady_clock::time_point lastPhaseAt() const { return lastPhaseAt_; }
    QString log() const;
    // What it has written to standard output and standard error so far.
    QString output();
    QString preferencesFile() const;
    QString historyFile() const;
    int run(const QStringList& arguments, QByteArray* output = nullptr) const;
    bool isRunning() const { return process_.state() == QProcess::Running; }
    int exitCode() const { return process_.exitCode(); }
    void kill();
    // Ends it as a user does, unless it has ended, and starts it with the same folders.
    void restart();

 private:
    void start();
    void waitForKeys() const;
    void end();

    QProcessEnvironment environment_;
    QTemporaryDir home_;
    QProcess process_;
    QByteArray output_;
    class PhaseRecorder;
    std::unique_ptr<PhaseRecorder> recorder_;
    mutable QStringList phases_;
    std::chrono::steady_clock::time_point lastPhaseAt_;
};

} // namespace lorvane
