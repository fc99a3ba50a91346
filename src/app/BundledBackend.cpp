// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/BundledBackend.h"

#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>

#include <utility>

namespace lorvane {

namespace {

constexpr int gentleEndMilliseconds = 2000;

} // namespace

BundledBackend::BundledBackend(const Foundation& foundation, QString executable, QString dataFolder,
                               Callbacks callbacks)
    : foundation_(foundation), executable_(std::move(executable)), dataFolder_(std::move(dataFolder)),
      callbacks_(std::move(callbacks)) {
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(&process_, &QProcess::readyReadStandardOutput, this, &BundledBackend::readAddress);
    connect(&process_, &QProcess::finished, this, &BundledBackend::childEnded);
    connect(&process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            foundation_.log.diagLog(
                QStringLiteral("[lorvane-backend] cannot be started: %1").arg(process_.errorString()));
            callbacks_.gaveUp();
        }
    });
}

BundledBackend::~BundledBackend() {
    ending_ = true;
    if (process_.state() == QProcess::NotRunning) {
        return;
    }
    process_.terminate();
    if (!process_.waitForFinished(gentleEndMilliseconds)) {
        process_.kill();
        process_.waitForFinished(gentleEndMilliseconds);
    }
}

QString BundledBackend::standardExecutable() {
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("lorvane-backend"));
}

void BundledBackend::silence() {
    // A channel that is forwarded takes no file.
    process_.setProcessChannelMode(QProcess::SeparateChannels);
    process_.setStandardErrorFile(QProcess::nullDevice());
}

void BundledBackend::start() {
    QDir().mkpath(dataFolder_);
    launch();
}

void BundledBackend::launch() {
    // On its old port, so that requests under way find it again; on any other if that one is taken by now.
    const QString listen = QStringLiteral("127.0.0.1:%1").arg(std::exchange(port_, 0));
    process_.start(executable_,
                   {QStringLiteral("--listen"), listen, QStringLiteral("--database"),
                    QDir(dataFolder_).filePath(QStringLiteral("backend.sqlite")),
                    // With our number, since we may be gone before the child can ask who its parent is.
                    QStringLiteral("--parent-watch"), QString::number(QCoreApplication::applicationPid())});
}

void BundledBackend::readAddress() {
    static const QRegularExpression address(QStringLiteral("^listening on (http://127\\.0\\.0\\.1:\\d+)$"));
    while (process_.canReadLine()) {
        const QString line = QString::fromUtf8(process_.readLine()).trimmed();
        if (const auto match = address.match(line); match.hasMatch()) {
            const QUrl url(match.captured(1));
            port_ = url.port();
            callbacks_.ready(url);
        }
    }
}

void BundledBackend::childEnded() {
    if (ending_) {
        return;
    }
    foundation_.log.diagLog(
        QStringLiteral("[lorvane-backend] ended unasked (exit code %1)").arg(process_.exitCode()));
    if (policy_.allowRestart(foundation_.clock.now())) {
        launch();
    } else {
        foundation_.log.diagLog(QStringLiteral("[lorvane-backend] died too often; it stays down"));
        callbacks_.gaveUp();
    }
}

} // namespace lorvane
