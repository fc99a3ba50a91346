// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DiagnosticLog.h"
#include "platform/linux/chords/ChordKeyboard.h"
#include "platform/linux/gnome/BusName.h"

#include <QDBusMessage>
#include <QObject>

namespace lorvane {

/// Keys by the virtual keyboard of a remote desktop session of the GNOME Shell
/// (org.gnome.Mutter.RemoteDesktop). While a session is open the panel shows that the screen is shared. Main
/// thread.
class RemoteDesktopKeys final : public QObject, public ChordKeyboard {
    Q_OBJECT

 public:
    RemoteDesktopKeys(QDBusConnection session, Clock& clock, DiagnosticLog& log);
    RemoteDesktopKeys(const RemoteDesktopKeys&) = delete;
    RemoteDesktopKeys& operator=(const RemoteDesktopKeys&) = delete;
    ~RemoteDesktopKeys() override;

    /// The service is there and has not refused a session.
    [[nodiscard]] bool isOffered() const override { return service_.isOwned() && !isRefused_; }
    QCoro::Task<bool> open(TaskScope scope) override;
    void close() override;

 protected:
    QCoro::Task<KeysOutcome> move(int inputCode, bool down, TaskScope scope) override;

 private Q_SLOTS:
    void closedByShell();

 private:
    /// One that is told of when nobody waits for it any more is closed again.
    QCoro::Task<QDBusMessage> createSession(TaskScope scope);
    void stop(const QString& path);
    [[nodiscard]] Completion<QDBusMessage> call(const QString& path, const QString& interface,
                                                const QString& method, const QVariantList& arguments = {});

    QDBusConnection bus_;
    Clock& clock_;
    DiagnosticLog& log_;
    /// The object of the open session; empty when there is none.
    QString session_;
    bool isRefused_ = false;
    BusName service_;
};

} // namespace lorvane
