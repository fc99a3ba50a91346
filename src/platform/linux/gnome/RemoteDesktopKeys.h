// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DiagnosticLog.h"
#include "base/Task.h"
#include "platform/linux/gnome/BusName.h"

#include <QDBusMessage>
#include <QObject>

#include <vector>

namespace lorvane {

/// Keys by the virtual keyboard of a remote desktop session of the GNOME Shell
/// (org.gnome.Mutter.RemoteDesktop). While a session is open the panel shows that the screen is shared, so
/// one is opened for the keys only. The compositor has one state of modifiers for all keyboards: what the
/// user holds works on these keys too, and cannot be lifted from here. Main thread.
class RemoteDesktopKeys final : public QObject {
    Q_OBJECT

 public:
    RemoteDesktopKeys(QDBusConnection session, Clock& clock, DiagnosticLog& log);
    ~RemoteDesktopKeys() override;

    /// The service is there and has not refused a session.
    [[nodiscard]] bool isOffered() const { return service_.isOwned() && !isRefused_; }
    /// Keys of ours may be going past at the moment.
    [[nodiscard]] bool isPosting() const;
    /// Presses keys, Linux input codes, in this order, slowly enough for applications to see each one with
    /// its modifiers, and lets them go in the opposite order. False when not all could be pressed; what was
    /// pressed is let go even so. One at a time. The session stays open until `close`.
    QCoro::Task<bool> chord(std::vector<int> inputCodes, TaskScope scope);
    void close();

 private Q_SLOTS:
    void closedByShell();

 private:
    QCoro::Task<bool> open(TaskScope scope);
    QCoro::Task<bool> move(int inputCode, bool down, TaskScope scope);
    [[nodiscard]] Completion<QDBusMessage> call(const QString& path, const QString& interface,
                                                const QString& method, const QVariantList& arguments = {});

    QDBusConnection bus_;
    Clock& clock_;
    DiagnosticLog& log_;
    /// The object of the open session; empty when there is none.
    QString session_;
    bool isRefused_ = false;
    int posting_ = 0;
    Instant lastPosted_;
    BusName service_;
};

} // namespace lorvane
