// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Localisation.h"

#include <QString>

#include <vector>

namespace lorvane {

/// By which road one need of dictation is met in this session.
struct DoctorRoad {
    enum class Need { hold, typing, paste, pill, tray, reading };
    Need need = Need::hold;
    /// The road that is taken, in the user's words; empty when there is none.
    QString taken;
    /// A better one that this desktop could have, and the exact step that opens it; empty when there is none.
    QString better;
    QString step;

    friend bool operator==(const DoctorRoad&, const DoctorRoad&) = default;
};

/// Stable name for programs that read the report.
[[nodiscard]] QString idOf(DoctorRoad::Need need);

/// What was found of a session; names of roads as they call themselves, empty where none is open.
struct RoadFacts {
    enum class PillKind { none, xWindow, layerShell };
    bool isWayland = false;
    /// Windows of an X server can be there, and keys be posted to them.
    bool hasX = false;
    QString hold;
    /// Why the hold road lacks keys that it could have; empty when it lacks none.
    QString holdLack;
    QString typing;
    QString paste;
    PillKind pill = PillKind::none;
    bool hasTray = false;
    /// How this desktop gets a tray.
    QString trayStep;
    bool readsFields = false;
    /// What "lorvane setup hold" and "lorvane setup typing" would do; empty when they would change nothing.
    QString holdSetup;
    QString typingSetup;
    /// The first of them has been done, and comes into force at the next login.
    bool holdAwaitsLogin = false;
    /// The first of them would let windows be known that show nothing to accessibility.
    bool holdSetupTellsWindows = false;
};

[[nodiscard]] std::vector<DoctorRoad> roadsFrom(const RoadFacts& facts, const Localisation& words);

} // namespace lorvane
