// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopAdapters.h"

#include "app/Stores.h"
#include "app/session/SessionProbe.h"
#include "app/session/WaylandSession.h"
#include "app/session/X11Session.h"
#include "platform/linux/av/SwrPCMConverter.h"

namespace lorvane {

namespace {

std::unique_ptr<DesktopSession> makeSession(const Foundation& foundation, const QDBusConnection& bus,
                                            DesktopAdapters& desktop) {
    if (desktop.choice.windowing != Windowing::wayland) {
        return std::make_unique<X11Session>(foundation, desktop.display);
    }
    const SessionParts parts{foundation, bus, desktop.wayland, desktop.seat, desktop.display};
    return std::make_unique<WaylandSession>(parts, desktop.accessibilityBus, desktop.choice.clipboard);
}

} // namespace

DesktopAdapters::DesktopAdapters(const Foundation& foundation, const QDBusConnection& bus)
    : accessibilitySwitch(bus), display(foundation.log), wayland(foundation.log), seat(wayland),
      choice(chooseSession(factsOf(display, wayland, foundation.clock))),
      accessibilityBus(foundation.clock, bus), session(makeSession(foundation, bus, *this)),
      fields(accessibilityBus, accessibilitySwitch, session->workspace(), foundation.clock),
      insertion(accessibilityBus, fields, foundation.clock),
      accessibility(
          foundation, accessibilityBus, accessibilitySwitch, [this] { return session->canPostKeys(); }, bus),
      sound(foundation.clock), inputs(sound), engines(sound, SwrPCMConverter::make), chime(sound),
      codec(LoadedTakeCodec::standardModule(), foundation.log), http(foundation.clock),
      secrets(foundation.clock), historyFile(dataFolder() + QStringLiteral("/tirra-history.json")),
      history(foundation.clock, historyFile), journal(history, foundation.preferences) {}

std::vector<FragmentPoster*> DesktopAdapters::posters() {
    std::vector<FragmentPoster*> all{&insertion};
    const auto more = session->posters();
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

bool DesktopAdapters::hasDisplay() const { return display.isAlive() || wayland.isAlive(); }

} // namespace lorvane
