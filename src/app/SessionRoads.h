// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/DoctorRoads.h"
#include "app/session/SessionFacts.h"
#include "app/session/WaylandSession.h"
#include "app/setup/SetupPlan.h"
#include "platform/linux/x11/X11Capabilities.h"

namespace lorvane {

/// The roads of this session for the doctor, over adapters of its own: what is open for the program that runs
/// beside it, or would run. Nothing is watched, typed or lent. Main thread.
class SessionRoads {
 public:
    SessionRoads(const Foundation& foundation, const QDBusConnection& bus, X11Connection& display,
                 AtspiBus& accessibilityBus);

    [[nodiscard]] bool isWayland() const { return choice_.windowing == Windowing::wayland; }
    /// What the adapters tell; the rest of the facts is the caller's. Waits a second for those that ask over
    /// a bus.
    QCoro::Task<RoadFacts> facts(TaskScope scope);

 private:
    void addWaylandRoads(RoadFacts& facts, const SetupFacts& setup);
    void addXRoads(RoadFacts& facts) const;

    Foundation foundation_;
    QDBusConnection bus_;
    X11Connection& display_;
    X11Capabilities capabilities_;
    WaylandConnection wayland_;
    WaylandSeat seat_;
    SessionChoice choice_;
    std::unique_ptr<WaylandSession> session_;
};

} // namespace lorvane
