// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DesktopPreferences.h"
#include "base/Foundation.h"
#include "core/PasteKeys.h"
#include "platform/linux/portal/PortalRequests.h"

#include <vector>

namespace lorvane {

using preference::remoteDesktopToken;

/// Keys by the portal for remote desktops (org.freedesktop.portal.RemoteDesktop, version 2 or later: sessions
/// that are opened again by a token). Nobody is asked in the middle of a paste: without a token nothing is
/// opened but by `ask`. The compositor has one state of modifiers for all keyboards, so what the user holds
/// works on these keys too. Main thread.
class PortalKeyboard final : public QObject {
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
    [[nodiscard]] bool isOffered() const;
    /// Why not, for log and doctor; empty when it is.
    [[nodiscard]] QString obstacle() const;
    /// Asks the user, with the desktop's own dialog, to allow keys to be posted from now on. Opens nothing
    /// that stays open.
    QCoro::Task<bool> ask(TaskScope scope);
    /// Opens a session by the token, unless one is open. False when there is none.
    QCoro::Task<bool> open(TaskScope scope);
    /// Presses keys, Linux input codes, in this order and lets them go in the opposite one; the last one is
    /// what acts. When not all could be pressed, the end of the session lets go of them. One at a time. Opens
    /// a session, which stays open until `close`.
    QCoro::Task<KeysOutcome> chord(std::vector<int> inputCodes, TaskScope scope);
    void close();

 private Q_SLOTS:
    void closedByDesktop(const QDBusMessage& signal);

 private:
    void lookForPortal();
    QCoro::Task<bool> openWithin(Duration startPatience, TaskScope scope);
    QCoro::Task<QString> createSession(TaskScope scope);
    QCoro::Task<bool> start(QString session, Duration startPatience, TaskScope scope);
    QCoro::Task<KeysOutcome> press(std::vector<int> inputCodes, TaskScope scope);
    QCoro::Task<KeysOutcome> move(int inputCode, bool down, TaskScope scope);
    void storeToken(const QVariantMap& results);
    [[nodiscard]] bool refuse(const QString& problem);

    Clock& clock_;
    Preferences& preferences_;
    DiagnosticLog& log_;
    PortalRequests requests_;
    uint version_ = 0;
    QString session_;
    TaskHandle looking_;
};

} // namespace lorvane
