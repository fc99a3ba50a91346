// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DiagnosticLog.h"
#include "core/PasteKeys.h"
#include "platform/linux/gnome/BusName.h"

#include <QDBusMessage>
#include <QObject>

#include <functional>
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
    /// Opens a session, unless one is open. False when there is none.
    QCoro::Task<bool> open(TaskScope scope);
    /// Presses keys, Linux input codes, in this order, slowly enough for applications to see each one with
    /// its modifiers, and lets them go in the opposite order; the last one is what acts. What was pressed is
    /// let go even when not all could be. One at a time. Opens a session, which stays open until `close`.
    /// The Shell asks the user's input method about each key and delivers it later, but what modifiers are
    /// down it tells at once: so these stay down until the keys have had their effect, at most 0.5 s.
    QCoro::Task<KeysOutcome> chord(std::vector<int> inputCodes, std::function<bool()> hasEffect,
                                   TaskScope scope);
    void close();

 private Q_SLOTS:
    void closedByShell();

 private:
    QCoro::Task<void> awaitDelivery(std::function<bool()> hasEffect, TaskScope scope);
    QCoro::Task<KeysOutcome> press(std::vector<int> inputCodes, TaskScope scope);
    QCoro::Task<KeysOutcome> move(int inputCode, bool down, TaskScope scope);
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
    int posting_ = 0;
    Instant lastPosted_;
    BusName service_;
};

} // namespace lorvane
