// SPDX-License-Identifier: GPL-3.0-or-later
#include "RealBackend.h"

#include "support/Wait.h"

namespace lorvane {

RealBackend::RealBackend(const QStringList& options) {
    process_.start(QStringLiteral(LORVANE_BACKEND_PROGRAM),
                   QStringList{QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0"),
                               QStringLiteral("--database"),
                               folder_.filePath(QStringLiteral("backend.sqlite"))} +
                       options);
    const QByteArray said("listening on ");
    QByteArray output;
    (void)waitUntil([&] {
        output += process_.readAllStandardOutput();
        return output.endsWith('\n') || process_.state() == QProcess::NotRunning;
    });
    if (output.startsWith(said)) {
        url_ = QUrl(QString::fromUtf8(output.mid(said.size()).trimmed()));
    }
}

RealBackend::~RealBackend() {
    process_.terminate();
    if (!process_.waitForFinished(10'000)) {
        kill();
    }
}

void RealBackend::kill() {
    process_.kill();
    process_.waitForFinished();
}

} // namespace lorvane
