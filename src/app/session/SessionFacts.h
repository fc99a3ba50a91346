// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace lorvane {

/// What was found of the session at the start. A plain value.
struct SessionFacts {
    /// An X server answers: the session's own, or XWayland.
    bool hasX = false;
    /// A Wayland compositor answers.
    bool hasCompositor = false;
    /// The compositor's globals: the newest version of each interface.
    QMap<QByteArray, std::uint32_t> globals;
    /// Qt can make windows on the compositor itself.
    bool hasWaylandPlugin = false;
    /// $QT_QPA_PLATFORM as the user set it, or what Qt runs on already; empty for neither.
    QString chosenQtPlatform;

    [[nodiscard]] bool offers(const QByteArray& interface) const { return globals.contains(interface); }
};

/// Where a window's keys and places come from.
enum class Windowing { none, x11, wayland };
enum class PillRoad {
    none,       ///< the tray, sounds and notifications carry it
    xWindow,    ///< a window of the X server, XWayland included
    layerShell, ///< a surface of the compositor's own layer above all windows
};
enum class ClipboardRoad { none, xSelection, dataControl };
enum class QtPlatform { none, xcb, wayland, offscreen };

/// What is chosen from the facts for the life of the process. What may come and go while it lives (hold
/// roads, ways to type, ways to paste, the tray) is not decided here: each of those says for itself whether
/// it is open.
struct SessionChoice {
    Windowing windowing = Windowing::none;
    QtPlatform platform = QtPlatform::none;
    PillRoad pill = PillRoad::none;
    ClipboardRoad clipboard = ClipboardRoad::none;

    friend bool operator==(const SessionChoice&, const SessionChoice&) = default;
};

[[nodiscard]] SessionChoice chooseSession(const SessionFacts& facts);

} // namespace lorvane
