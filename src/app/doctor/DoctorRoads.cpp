// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/DoctorRoads.h"

namespace lorvane {

namespace {

using Need = DoctorRoad::Need;

DoctorRoad hold(const RoadFacts& facts, const Localisation& words) {
    DoctorRoad road{Need::hold, facts.hold, {}, {}};
    const bool lacks = facts.hold.isEmpty() || !facts.holdLack.isEmpty();
    if (lacks && !facts.holdSetup.isEmpty()) {
        road.better = facts.holdSetup;
        road.step = QStringLiteral("lorvane setup hold");
    } else if (facts.hold.isEmpty() && facts.holdAwaitsLogin) {
        road.better = words.text("Lorvane's extension of the GNOME Shell, which is in place");
        road.step = words.text("Log out and in again: the Shell loads it then.");
    } else if (facts.hold.isEmpty()) {
        road.better = words.text("a key of your desktop that runs a command");
        road.step = words.text("Bind one to \"lorvane toggle\" in your desktop's settings.");
    }
    return road;
}

DoctorRoad typing(const RoadFacts& facts, const Localisation& words) {
    const QString insertion = words.text("insertion through accessibility");
    DoctorRoad road{Need::typing, insertion, {}, {}};
    if (!facts.typing.isEmpty()) {
        road.taken = words.text("%1, elsewhere %2").arg(insertion, facts.typing);
    } else if (facts.isWayland) {
        road.taken = words.text("%1, elsewhere by pasting").arg(insertion);
    }
    if (facts.typing.isEmpty() && !facts.typingSetup.isEmpty()) {
        road.better = facts.typingSetup;
        road.step = QStringLiteral("lorvane setup typing");
    }
    return road;
}

DoctorRoad paste(const RoadFacts& facts, const Localisation& words) {
    DoctorRoad road{Need::paste, facts.paste, {}, {}};
    if (!facts.paste.isEmpty()) {
        if (facts.holdSetupTellsWindows) {
            road.better = words.text("the right keys in terminals that show nothing to accessibility too");
            road.step = QStringLiteral("lorvane setup hold");
        }
        return road;
    }
    if (facts.isWayland && facts.hasX) {
        road.taken = words.text("keys of the X server, for X11 applications only");
    }
    if (!facts.typingSetup.isEmpty()) {
        road.better = words.text("keys in every application");
        road.step = QStringLiteral("lorvane setup typing");
    }
    return road;
}

DoctorRoad pill(const RoadFacts& facts, const Localisation& words) {
    switch (facts.pill) {
    case RoadFacts::PillKind::xWindow:
        return {Need::pill,
                facts.isWayland ? words.text("a window of XWayland above all others")
                                : words.text("a window above all others"),
                {},
                {}};
    case RoadFacts::PillKind::layerShell:
        return {Need::pill, words.text("a surface of the compositor's overlay, without menus"),
                words.text("a window of XWayland with menus"),
                words.text("Install the package xwayland and log in again.")};
    case RoadFacts::PillKind::none:
        break;
    }
    return {Need::pill,
            {},
            words.text("a window of XWayland above all others"),
            words.text("Install the package xwayland and log in again.")};
}

DoctorRoad tray(const RoadFacts& facts, const Localisation& words) {
    if (facts.hasTray) {
        return {Need::tray, words.text("the desktop's tray"), {}, {}};
    }
    return {Need::tray,
            facts.pill == RoadFacts::PillKind::xWindow ? words.text("the menu of the pill") : QString(),
            words.text("a tray"), facts.trayStep};
}

DoctorRoad reading(const RoadFacts& facts, const Localisation& words) {
    if (facts.readsFields) {
        return {Need::reading, words.text("the accessibility bus"), {}, {}};
    }
    return {
        Need::reading,
        {},
        words.text("the accessibility bus"),
        words.text("Start Lorvane: it switches accessibility on. Then start the other applications again.")};
}

} // namespace

QString idOf(DoctorRoad::Need need) {
    switch (need) {
    case Need::hold:
        return QStringLiteral("hold");
    case Need::typing:
        return QStringLiteral("typing");
    case Need::paste:
        return QStringLiteral("paste");
    case Need::pill:
        return QStringLiteral("pill");
    case Need::tray:
        return QStringLiteral("tray");
    case Need::reading:
        break;
    }
    return QStringLiteral("reading");
}

std::vector<DoctorRoad> roadsFrom(const RoadFacts& facts, const Localisation& words) {
    return {hold(facts, words), typing(facts, words), paste(facts, words),
            pill(facts, words), tray(facts, words),   reading(facts, words)};
}

} // namespace lorvane
