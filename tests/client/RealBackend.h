// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <QUrl>

namespace lorvane {

/// The backend's own program as a child, with a database of its own on a free loopback port. Main thread.
class RealBackend {
 public:
    /// Returns once it listens; `options` as on its command line.
    explicit RealBackend(const QStringList& options);
    RealBackend(const RealBackend&) = delete;
    RealBackend& operator=(const RealBackend&) = delete;
    ~RealBackend();

    /// Empty when it did not start.
    [[nodiscard]] QUrl url() const { return url_; }
    void kill();
    /// What it has logged so far.
    [[nodiscard]] QByteArray log() { return log_ += process_.readAllStandardError(); }

 private:
    QTemporaryDir folder_;
    QProcess process_;
    QUrl url_;
    QByteArray log_;
};

} // namespace lorvane
