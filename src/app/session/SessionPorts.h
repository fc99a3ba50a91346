// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "core/EditingKeys.h"
#include "core/FragmentPoster.h"
#include "core/PasteKeys.h"
#include "input/HoldRoad.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandSeat.h"
#include "platform/linux/x11/X11Connection.h"

#include <QDBusConnection>

#include <functional>
#include <vector>

namespace lorvane {

/// One adapter among several for the same port.
template <typename Port>
struct Road {
    Port* port = nullptr;
    /// For log and doctor.
    QString name;
    /// Asked each time: empty when the road can be taken now, else what is missing, in the user's words.
    std::function<QString()> obstacle;

    [[nodiscard]] bool isOpen() const { return obstacle().isEmpty(); }
};

/// What one family of compositors gives, best first in each list. The roads are there for the life of the
/// program; which of them are open changes.
struct SessionPorts {
    std::vector<HoldRoad*> holdRoads;
    std::vector<Road<FragmentPoster>> posters;
    std::vector<Road<EditingKeys>> editingKeys;
    std::vector<Road<PasteKeys>> pasteKeys;
};

/// What the adapters of a session are made from; everything outlives them.
struct SessionParts {
    Foundation foundation;
    QDBusConnection bus;
    WaylandConnection& wayland;
    WaylandSeat& seat;
    /// The X display beside the compositor (XWayland); not alive where there is none.
    X11Connection& display;
};

} // namespace lorvane
