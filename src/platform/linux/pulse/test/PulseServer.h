// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/Wait.h"

#include <QFile>
#include <QString>
#include <QStringList>

#include <csignal>
#include <gtest/gtest.h>

namespace lorvane {

// What pactl printed, trimmed; a failure of it fails the test.
inline QString pactl(const QStringList& arguments) {
    const ToolResult result = runTool(QStringLiteral("pactl"), arguments);
    EXPECT_EQ(result.status, 0) << arguments.join(u' ').toStdString() << ": " << result.errors.toStdString();
    return QString::fromUtf8(result.output).trimmed();
}

// The desktop's sound server is there and does nothing while this lives.
class FrozenServer {
 public:
    FrozenServer() {
        QFile file(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/pulse/pid"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
        pid_ = file.readAll().trimmed().toInt();
        EXPECT_TRUE(pid_ > 1 && ::kill(pid_, SIGSTOP) == 0);
    }
    ~FrozenServer() { thaw(); }
    FrozenServer(const FrozenServer&) = delete;
    FrozenServer& operator=(const FrozenServer&) = delete;
    void thaw() const {
        if (pid_ > 1) {
            ::kill(pid_, SIGCONT);
        }
    }

 private:
    pid_t pid_ = 0;
};

// Something that a test adds to the server and takes away again.
class PulseModule {
 public:
    explicit PulseModule(const QStringList& description)
        : number_(pactl(QStringList{QStringLiteral("load-module")} + description)) {}
    ~PulseModule() { unload(); }
    PulseModule(const PulseModule&) = delete;
    PulseModule& operator=(const PulseModule&) = delete;
    void unload() {
        if (!number_.isEmpty()) {
            runTool(QStringLiteral("pactl"), {QStringLiteral("unload-module"), number_});
            number_.clear();
        }
    }

 private:
    QString number_;
};

} // namespace lorvane
