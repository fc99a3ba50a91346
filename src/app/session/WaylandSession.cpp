// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/WaylandSession.h"

#include "app/session/NoPasteboard.h"
#include "app/session/XWaylandPasteboard.h"
#include "platform/linux/clipboard/DataControlPasteboard.h"
#include "platform/linux/x11/X11Capabilities.h"

#include <QCoreApplication>
#include <QLocale>

namespace lorvane {

namespace {

DesktopEntries installedApplications() {
    return DesktopEntries(DesktopEntries::standardFolders(), QLocale::system().name());
}

template <typename List>
void append(List& list, List more) {
    list.insert(list.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

Road<PasteKeys> keysOfX(X11PasteKeys& keys, X11Connection& display) {
    const bool takesKeys = capabilitiesOf(display).canPostKeys();
    return {&keys, QStringLiteral("XTest"), [&display, takesKeys] {
                return takesKeys && display.isAlive()
                           ? QString()
                           : QStringLiteral("there is no X display that takes keys");
            }};
}

} // namespace

WaylandSession::WaylandSession(const SessionParts& parts, AtspiBus& bus, ClipboardRoad clipboard)
    : display_(parts.display), wayland_(parts.wayland), xWorkspace_(parts.display, installedApplications()),
      naming_(installedApplications()),
      atspiWorkspace_(bus,
                      [this](ProcessId process, const QString& name) { return naming_.name(process, name); }),
      windowWorkspace_([this] { return activeWindow(); }, naming_),
      workspace_(xWorkspace_, atspiWorkspace_, windowWorkspace_), wlroots_(parts), kde_(parts), gnome_(parts),
      common_(parts), roads_(collect()), keyEvents_(parts.foundation, roads_.holdRoads),
      xEditingKeys_(parts.display),
      editingKeys_([this] { return isXInFront(); }, xEditingKeys_, roads_.editingKeys),
      xLayout_(parts.display), xPasteKeys_(parts.display, parts.foundation.clock, xLayout_),
      pasteKeys_([this] { return isXInFront(); }, keysOfX(xPasteKeys_, parts.display), roads_.pasteKeys,
                 parts.foundation.log),
      xKeyPoster_(parts.display, parts.foundation.clock, xLayout_,
                  [this](const RunningApplication& application) { return settleTimes_.of(application); }) {
    gatePosters();
    openPasteboard(parts, clipboard);
}

std::optional<WindowIdentity> WaylandSession::activeWindow() const {
    for (const auto& window : {kde_.activeWindow(), wlroots_.activeWindow(), gnome_.activeWindow()}) {
        if (window) {
            return window;
        }
    }
    return std::nullopt;
}

SessionPorts WaylandSession::collect() {
    SessionPorts all = wlroots_.ports();
    for (SessionPorts more : {kde_.ports(), gnome_.ports(), common_.ports()}) {
        append(all.holdRoads, std::move(more.holdRoads));
        append(all.posters, std::move(more.posters));
        append(all.editingKeys, std::move(more.editingKeys));
        append(all.pasteKeys, std::move(more.pasteKeys));
    }
    return all;
}

void WaylandSession::gatePosters() {
    for (const Road<FragmentPoster>& road : roads_.posters) {
        posters_.push_back(std::make_unique<GatedPoster>(
            *road.port, [this, isOpen = road.obstacle] { return !isXInFront() && isOpen().isEmpty(); }));
    }
    posters_.push_back(std::make_unique<GatedPoster>(xKeyPoster_, [this] { return isXInFront(); }));
}

void WaylandSession::openPasteboard(const SessionParts& parts, ClipboardRoad clipboard) {
    Clock& clock = parts.foundation.clock;
    if (clipboard == ClipboardRoad::dataControl) {
        if (auto controlled = DataControlPasteboard::open(parts.wayland, parts.seat, clock)) {
            pasteKeys_.onKeys = [pasteboard = controlled.get()] { pasteboard->keysGoOut(); };
            pasteboard_ = std::move(controlled);
        }
    } else if (clipboard == ClipboardRoad::xSelection) {
        if (auto besides = XWaylandPasteboard::open(clock, xWorkspace_)) {
            pasteKeys_.onKeys = [pasteboard = besides.get()] { pasteboard->keysGoOut(); };
            pasteboard_ = std::move(besides);
        }
    }
    if (!pasteboard_) {
        pasteboard_ = std::make_unique<NoPasteboard>(parts.foundation.log);
    }
}

std::vector<FragmentPoster*> WaylandSession::posters() {
    std::vector<FragmentPoster*> all;
    for (const auto& poster : posters_) {
        all.push_back(poster.get());
    }
    return all;
}

bool WaylandSession::canPostKeys() {
    const auto isOpen = [](const Road<FragmentPoster>& road) { return road.isOpen(); };
    return pasteKeys_.canPost() || std::any_of(roads_.posters.begin(), roads_.posters.end(), isOpen);
}

void WaylandSession::watchOwnWindows() { QCoreApplication::instance()->installEventFilter(&keyEvents_); }

} // namespace lorvane
