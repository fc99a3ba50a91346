// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/Handle.h"
#include "base/Signal.h"
#include "input/Workspace.h"

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QString>

#include <map>
#include <memory>
#include <optional>
#include <vector>

#include <xcb/xcb.h>

class QSocketNotifier;

namespace lorvane {

/// What a property of a window held.
struct WindowProperty {
    bool exists = false;
    xcb_atom_t type = XCB_ATOM_NONE;
    int format = 0;
    QByteArray bytes;
    /// There was more than was asked for.
    bool cut = false;
};

/// A selection has a new owner, or none.
struct SelectionChange {
    xcb_atom_t selection = XCB_ATOM_NONE;
    xcb_window_t owner = XCB_WINDOW_NONE;
    xcb_timestamp_t time = XCB_CURRENT_TIME;
    /// The last of our requests that the server had carried out before it happened.
    std::uint32_t afterRequest = 0;
};

/// A connection to the X server of its own, with its events in the Qt event loop. Questions to the server
/// (never to another client) wait for its answer. Main thread. When the server goes, every call does nothing.
class XcbConnection : public QObject {
 public:
    using Handler = std::function<void(const xcb_generic_event_t&)>;

    /// Connects to $DISPLAY; null when there is no server or it lacks XFixes.
    [[nodiscard]] static std::unique_ptr<XcbConnection> open();
    ~XcbConnection() override;

    [[nodiscard]] xcb_connection_t* raw() const { return connection_; }
    [[nodiscard]] xcb_atom_t atom(const QString& name);
    /// The names of atoms, in one go; empty where there is no such atom.
    [[nodiscard]] QStringList atomNames(const std::vector<xcb_atom_t>& atoms);
    [[nodiscard]] xcb_window_t makeWindow();
    void destroyWindow(xcb_window_t window);
    /// Made by this connection.
    [[nodiscard]] bool isOurs(xcb_window_t window) const;
    [[nodiscard]] xcb_window_t ownerOf(xcb_atom_t selection);
    /// The process behind a window of any client on this machine.
    [[nodiscard]] std::optional<ProcessId> processOf(xcb_window_t window);
    [[nodiscard]] WindowProperty property(xcb_window_t window, xcb_atom_t name, qsizetype mostBytes,
                                          bool remove);
    /// The most bytes that fit in one request.
    [[nodiscard]] qsizetype mostBytesInRequest() const;
    void flush();

    /// Events that concern a window go to its handler; what has none goes to `foreign`.
    [[nodiscard]] Handle handle(xcb_window_t window, Handler handler);
    Signal<xcb_generic_event_t> foreign;
    /// Changes of the selections that were watched.
    void watchSelection(xcb_window_t window, xcb_atom_t selection);
    Signal<SelectionChange> selectionChanged;

    /// Handles events while `goOn` says so, at most for `bound`; for the end of the program, when no loop
    /// runs.
    void runUntil(const std::function<bool()>& done, Clock& clock, Duration bound);

 private:
    explicit XcbConnection(xcb_connection_t* connection);
    bool setUp();
    void dispatchPending();
    void dispatchSoon();
    void dispatch(const xcb_generic_event_t& event);
    template <typename Reply, typename Cookie>
    auto ask(Reply* (*reply)(xcb_connection_t*, Cookie, xcb_generic_error_t**), Cookie cookie);

    xcb_connection_t* connection_;
    QSocketNotifier* notifier_ = nullptr;
    std::uint8_t firstFixesEvent_ = 0;
    bool knowsProcesses_ = false;
    bool dispatchIsDue_ = false;
    QHash<QString, xcb_atom_t> atoms_;
    QHash<xcb_atom_t, QString> names_;
    std::map<xcb_window_t, std::shared_ptr<Handler>> handlers_;
};

} // namespace lorvane
