// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "base/Signal.h"
#include "input/HoldRoad.h"
#include "platform/linux/portal/PortalRequests.h"

#include <memory>

namespace lorvane {

/// A key by the portal for global shortcuts (org.freedesktop.portal.GlobalShortcuts): one that is no
/// modifier, the extra key unless the user picks another in the desktop's own dialog. The dialog comes with
/// the first watch of that key, and is not shown again in this run when the user said no. What the portal
/// tells are true edges. Main thread.
class PortalHoldRoad final : public QObject, public HoldRoad {
    Q_OBJECT

 public:
    PortalHoldRoad(const Foundation& foundation, const QDBusConnection& session);
    PortalHoldRoad(const PortalHoldRoad&) = delete;
    PortalHoldRoad& operator=(const PortalHoldRoad&) = delete;
    ~PortalHoldRoad() override;

    /// The longest that the dialog may stay open.
    static constexpr Duration dialogPatience = std::chrono::minutes(5);

    [[nodiscard]] QString name() const override { return QStringLiteral("desktop portal"); }
    [[nodiscard]] HoldOffer offer() const override;
    [[nodiscard]] Handle watch(std::vector<int> keyCodes,
                               std::function<void(const HoldEdge&)> observer) override;
    /// The desktop has bound it.
    [[nodiscard]] bool isInForce(int /*keyCode*/) const override { return isBound_; }
    QCoro::Task<std::optional<bool>> isHeld(int keyCode, TaskScope scope) override;
    [[nodiscard]] Handle onChange(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }

 private Q_SLOTS:
    void activated(const QDBusMessage& signal);
    void deactivated(const QDBusMessage& signal);
    void closedByDesktop(const QDBusMessage& signal);

 private:
    struct Watch {
        std::function<void(const HoldEdge&)> observer;
    };

    void lookForPortal();
    void portalCameOrWent(bool isThere);
    void setObstacle(const QString& obstacle);
    void begin();
    void end();
    QCoro::Task<void> bind(TaskScope scope);
    QCoro::Task<void> bindInSession(QString session, TaskScope scope);
    void hear(const QString& session);
    void tell(const QDBusMessage& signal, HoldEdgeKind kind);
    void forgetSession();
    [[nodiscard]] QVariantList wantedShortcuts() const;

    Clock& clock_;
    Preferences& preferences_;
    const Localisation& words_;
    DiagnosticLog& log_;
    PortalRequests requests_;
    /// Why there is no key at the moment; empty when there is one.
    QString obstacle_;
    std::shared_ptr<Watch> watch_;
    /// The session whose shortcuts are bound; empty while there is none.
    QString session_;
    bool isBound_ = false;
    Signal<> changed_;
    TaskHandle looking_;
    TaskHandle binding_;
};

} // namespace lorvane
