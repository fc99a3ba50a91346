// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DesktopPreferences.h"
#include "base/Foundation.h"
#include "platform/linux/chords/ChordKeyboard.h"
#include "platform/linux/portal/PortalRequests.h"

namespace lorvane {

using preference::remoteDesktopToken;

/// Keys by the portal for remote desktops (org.freedesktop.portal.RemoteDesktop, version 2 or later: sessions
/// that are opened again by a token). Nobody is asked in the middle of a paste: without a token nothing is
/// opened but by `ask`. Main thread.
class PortalKeyboard final : public QObject, public ChordKeyboard {
    Q_OBJECT

 public:
    PortalKeyboard(const Foundation& foundation, const QDBusConnection& session);
    PortalKeyboard(const PortalKeyboard&) = delete;
    PortalKeyboard& operator=(const PortalKeyboard&) = delete;
    ~PortalKeyboard() override;

    /// How long a session that needs no question may take to open, and how long a question may stand.
    static constexpr Duration patience = std::chrono::milliseconds(1500);
    static constexpr Duration dialogPatience = std::chrono::minutes(5);

    /// The portal is there and the user has allowed it before.
    [[nodiscard]] bool isOffered() const override;
    /// Why not, for log and doctor; empty when it is.
    [[nodiscard]] QString obstacle() const;
    /// Asks the user, with the desktop's own dialog, to allow keys to be posted from now on. Opens nothing
    /// that stays open.
    QCoro::Task<bool> ask(TaskScope scope);
    /// By the token.
    QCoro::Task<bool> open(TaskScope scope) override;
    void close() override;

 protected:
    QCoro::Task<KeysOutcome> move(int inputCode, bool down, TaskScope scope) override;

 private Q_SLOTS:
    void closedByDesktop(const QDBusMessage& signal);

 private:
    void lookForPortal();
    QCoro::Task<bool> openWithin(Duration startPatience, TaskScope scope);
    QCoro::Task<QString> createSession(TaskScope scope);
    QCoro::Task<bool> start(QString session, Duration startPatience, TaskScope scope);
    void storeToken(const QVariantMap& results);
    [[nodiscard]] bool refuse(const QString& problem);

    Preferences& preferences_;
    DiagnosticLog& log_;
    PortalRequests requests_;
    uint version_ = 0;
    QString session_;
    TaskHandle looking_;
};

} // namespace lorvane
