// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SessionRoads.h"

#include "app/session/SessionProbe.h"
#include "app/setup/SetupProbe.h"
#include "base/PreferenceCatalogue.h"
#include "input/Hotkey.h"

namespace lorvane {

namespace {

constexpr Duration patience = std::chrono::seconds(1);

template <typename Port>
QString openRoads(const std::vector<Road<Port>>& roads) {
    QStringList names;
    for (const auto& road : roads) {
        if (road.isOpen() && !names.contains(road.name)) {
            names.append(road.name);
        }
    }
    return names.join(QStringLiteral(", "));
}

QString changesOf(const SetupPlan& plan) {
    return plan.changesAnything() ? plan.told.join(QLatin1Char(' ')) : QString();
}

QString trayStep(SetupDesktop desktop, const Localisation& words) {
    switch (desktop) {
    case SetupDesktop::gnome:
        return words.text("Install the extension AppIndicator and switch it on.");
    case SetupDesktop::kde:
        return words.text("Add the system tray to a panel.");
    case SetupDesktop::x11:
        return words.text("Start a panel that has a tray.");
    case SetupDesktop::sway:
    case SetupDesktop::hyprland:
    case SetupDesktop::niri:
    case SetupDesktop::other:
        break;
    }
    return words.text("Start a bar that has a tray, such as waybar.");
}

/// The one that a first start chooses where none is stored.
Hotkey chosenHoldKey(const Preferences& preferences) {
    if (!preferences.stored(preference::hotkey)) {
        return Hotkey::rightControl;
    }
    return hotkeyFromRawName(preferences.get(preference::hotkey)).value_or(Hotkey::rightCommand);
}

/// The best that offers the key.
const HoldRoad* holdRoadIn(const std::vector<HoldRoad*>& roads, Hotkey key) {
    for (const HoldRoad* const road : roads) {
        for (const HoldKeyOffer& offer : road->offer().keys) {
            if (offer.keyCode == codeOf(key)) {
                return road;
            }
        }
    }
    return nullptr;
}

RoadFacts::PillKind kindOf(PillRoad pill) {
    switch (pill) {
    case PillRoad::xWindow:
        return RoadFacts::PillKind::xWindow;
    case PillRoad::layerShell:
        return RoadFacts::PillKind::layerShell;
    case PillRoad::none:
        break;
    }
    return RoadFacts::PillKind::none;
}

} // namespace

SessionRoads::SessionRoads(const Foundation& foundation, const QDBusConnection& bus, X11Connection& display,
                           AtspiBus& accessibilityBus)
    : foundation_(foundation), bus_(bus), display_(display), capabilities_(capabilitiesOf(display)),
      wayland_(foundation.log), seat_(wayland_),
      choice_(chooseSession(factsOf(display, wayland_, foundation.clock))) {
    if (isWayland()) {
        const SessionParts parts{foundation, bus, wayland_, seat_, display};
        session_ = std::make_unique<WaylandSession>(parts, accessibilityBus, ClipboardRoad::none);
    }
}

QCoro::Task<RoadFacts> SessionRoads::facts(TaskScope scope) {
    RoadFacts facts;
    facts.isWayland = isWayland();
    facts.hasX = display_.isAlive() && capabilities_.canPostKeys();
    facts.pill = kindOf(choice_.pill);
    const SetupFacts setup = probeSetup(bus_);
    facts.trayStep = trayStep(setup.desktop, foundation_.words);
    if (session_) {
        co_await sleep(foundation_.clock, patience, scope);
        addWaylandRoads(facts, setup);
    } else {
        addXRoads(facts);
    }
    co_return facts;
}

void SessionRoads::addWaylandRoads(RoadFacts& facts, const SetupFacts& setup) {
    const SessionPorts& roads = session_->roads();
    if (const HoldRoad* const road = holdRoadIn(roads.holdRoads, chosenHoldKey(foundation_.preferences))) {
        facts.hold = road->name();
        facts.holdLack = road->offer().obstacle;
    }
    facts.typing = openRoads(roads.posters);
    facts.paste = openRoads(roads.pasteKeys);
    const SetupPlan hold = planSetup(SetupTopic::hold, setup, foundation_.words);
    facts.holdSetup = changesOf(hold);
    facts.holdAwaitsLogin = setup.isShellExtensionForNextLogin;
    facts.holdSetupTellsWindows = hold.placesShellExtension;
    facts.typingSetup = changesOf(planSetup(SetupTopic::typing, setup, foundation_.words));
}

void SessionRoads::addXRoads(RoadFacts& facts) const {
    if (capabilities_.canWatchKeys()) {
        facts.hold = foundation_.words.text("raw events of the X server");
    }
    if (facts.hasX) {
        facts.typing = foundation_.words.text("keys of the X server");
        facts.paste = facts.typing;
    }
}

} // namespace lorvane
