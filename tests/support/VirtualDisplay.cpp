// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/VirtualDisplay.h"

#include "support/Wait.h"

#include <stdexcept>

namespace lorvane {

namespace {
constexpr int bound = static_cast<int>(generously.count());
} // namespace

VirtualDisplay::VirtualDisplay() : before_(qgetenv("DISPLAY")) {
    // It writes its number to standard output when it is ready.
    server_.start(QStringLiteral("Xvfb"),
                  {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                   QStringLiteral("0"), QStringLiteral("640x480x24"), QStringLiteral("-nolisten"),
                   QStringLiteral("tcp"), QStringLiteral("-noreset")});
    QByteArray number;
    while (!number.endsWith('\n')) {
        if (!server_.waitForReadyRead(bound)) {
            end();
            throw std::runtime_error("Xvfb did not come up: " + server_.readAllStandardError().toStdString());
        }
        number += server_.readAllStandardOutput();
    }
    qputenv("DISPLAY", ":" + number.trimmed());
}

VirtualDisplay::~VirtualDisplay() {
    end();
    qputenv("DISPLAY", before_);
}

// A signal that it can clean up after: its lock file and its socket.
void VirtualDisplay::end() {
    if (server_.state() == QProcess::NotRunning) {
        return;
    }
    server_.terminate();
    if (!server_.waitForFinished(bound)) {
        server_.kill();
        server_.waitForFinished(bound);
    }
}

} // namespace lorvane
