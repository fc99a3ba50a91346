// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RestartPolicy.h"
#include "base/Foundation.h"

#include <QObject>
#include <QProcess>
#include <QUrl>

#include <functional>

namespace lorvane {

/// The backend that comes with the program: a child on a free loopback port. It ends with the program, even
/// when the program is killed (the child watches its parent), and is started again when it dies.
class BundledBackend : public QObject {
 public:
    struct Callbacks {
        /// The child answers at this address; told again after each restart.
        std::function<void(const QUrl& url)> ready;
        /// It died too often and stays down, or could not be started at all.
        std::function<void()> gaveUp;
    };

    /// `dataFolder`: where the child keeps its database; made when missing.
    BundledBackend(const Foundation& foundation, QString executable, QString dataFolder, Callbacks callbacks);
    ~BundledBackend() override;

    void start();
    /// Drops what the child says of its requests; else it goes to this program's standard error.
    void silence();
    /// Beside this program.
    [[nodiscard]] static QString standardExecutable();
    /// The child's process, 0 when none runs.
    [[nodiscard]] qint64 processId() const { return process_.processId(); }

 private:
    void launch();
    void readAddress();
    void childEnded();

    Foundation foundation_;
    QString executable_;
    QString dataFolder_;
    Callbacks callbacks_;
    RestartPolicy policy_;
    QProcess process_;
    bool ending_ = false;
    /// Where the last child listened; 0: wherever it likes.
    int port_ = 0;
};

} // namespace lorvane
