// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/DiagnosticLog.h"
#include "base/Handle.h"
#include "base/Signal.h"

#include <QByteArray>
#include <QObject>

#include <cstdint>
#include <map>
#include <memory>
#include <utility>

#include <wayland-client.h>

class QSocketNotifier;

namespace lorvane {

template <typename Object>
struct WaylandDestroy {
    void (*destroy)(Object*) = nullptr;
    void operator()(Object* object) const { destroy(object); }
};
/// Owns a protocol object. Declared after its connection, since an object has to end before it.
template <typename Object>
using WaylandOwned = std::unique_ptr<Object, WaylandDestroy<Object>>;
/// `waylandOwned(connection.bind<wl_seat>(wl_seat_interface, 1), wl_seat_destroy)`.
template <typename Object>
[[nodiscard]] WaylandOwned<Object> waylandOwned(Object* object, void (*destroy)(Object*)) {
    return {object, {destroy}};
}

/// Something the compositor offers to everyone.
struct WaylandGlobal {
    /// The compositor's number for it; no two globals of one connection share it, nor one after the other.
    std::uint32_t name = 0;
    QByteArray interface;
    std::uint32_t version = 0;
};

/// A connection of our own to a Wayland compositor, read by the Qt event loop; the toolkit's windows have
/// nothing to do with it. Main thread.
///
/// Nothing here waits for the compositor except `runUntil` and `awaitGlobals`, which are bounded. Requests
/// are buffered and leave before the event loop sleeps, or with `flush`; many thousands in one go would fill
/// the socket, which libwayland takes for a loss, so who sends that many waits for `afterServer` in between.
///
/// Nothing here ends the program: a compositor that goes away and an error of the protocol are both told once
/// by `onLost`, and every request after that does nothing. Protocol objects outlive the loss, not this
/// object. It must not end inside an event of its own.
class WaylandConnection : public QObject {
 public:
    /// `display` as in $WAYLAND_DISPLAY, which is taken when it is empty ($WAYLAND_SOCKET before it). Without
    /// a compositor `isAlive` is false from the beginning, and nobody is told of a loss.
    explicit WaylandConnection(DiagnosticLog& log, const QByteArray& display = {});
    ~WaylandConnection() override;
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;

    [[nodiscard]] bool isAlive() const { return !isLost_; }
    /// Null when no compositor answered.
    [[nodiscard]] wl_display* display() const { return display_; }
    /// Whether the first list of globals has come.
    [[nodiscard]] bool knowsGlobals() const { return knowsGlobals_; }
    /// Waits for the first list of globals, at most for `bound`; whether it has come.
    bool awaitGlobals(const Clock& clock, Duration bound);

    /// Whether a global of this interface, of at least this version, is there now.
    [[nodiscard]] bool offers(const QByteArray& interface, std::uint32_t leastVersion = 1) const;
    [[nodiscard]] const std::map<std::uint32_t, WaylandGlobal>& globals() const { return globals_; }
    /// Told within the call of each global of the interface that is there, and later of each that comes.
    [[nodiscard]] Handle onGlobal(const QByteArray& interface,
                                  std::function<void(const WaylandGlobal&)> appeared);
    /// Told of each global that goes, whatever its interface. Objects bound to it do nothing from then on.
    [[nodiscard]] Handle onGlobalGone(std::function<void(const WaylandGlobal&)> gone) {
        return gone_.subscribe(std::move(gone));
    }
    /// Told when a global has come or gone, once the first list is there.
    [[nodiscard]] Handle onGlobalsChanged(std::function<void()> changed) {
        return changed_.subscribe(std::move(changed));
    }

    /// The first global of the interface, in the highest version that both know, `mostVersion` at most: what
    /// the caller's listeners were written for. Null without one of at least `leastVersion`.
    template <typename Object>
    [[nodiscard]] Object* bind(const wl_interface& interface, std::uint32_t mostVersion,
                               std::uint32_t leastVersion = 1) {
        return static_cast<Object*>(bindFirst(interface, mostVersion, leastVersion));
    }
    /// That very global; null when it has gone.
    template <typename Object>
    [[nodiscard]] Object* bindGlobal(const WaylandGlobal& global, const wl_interface& interface,
                                     std::uint32_t mostVersion) {
        return static_cast<Object*>(bindName(global.name, interface, mostVersion));
    }

    /// Hands the buffered requests to the socket now.
    void flush();
    /// Runs `done` once the compositor has carried out every request made before, and its events were told.
    [[nodiscard]] Handle afterServer(std::function<void()> done);
    /// Handles events until `done` says so or the connection is lost, at most for `bound`. For the start and
    /// the end of the program, when no event loop runs; not inside an event.
    void runUntil(const std::function<bool()>& done, const Clock& clock, Duration bound);

    [[nodiscard]] Handle onLost(std::function<void()> observer) {
        return lost_.subscribe(std::move(observer));
    }

 private:
    static const wl_registry_listener registryListener;
    void globalCame(WaylandGlobal global);
    void globalWent(std::uint32_t name);
    [[nodiscard]] void* bindFirst(const wl_interface& interface, std::uint32_t mostVersion,
                                  std::uint32_t leastVersion);
    [[nodiscard]] void* bindName(std::uint32_t name, const wl_interface& interface,
                                 std::uint32_t mostVersion);
    void watchSocket();
    /// Takes what the socket has, without waiting, and tells it.
    void readAndTell();
    void lose();
    [[nodiscard]] QString reasonOfLoss() const;

    DiagnosticLog& log_;
    wl_display* display_ = nullptr;
    wl_registry* registry_ = nullptr;
    QSocketNotifier* readable_ = nullptr;
    QSocketNotifier* writable_ = nullptr;
    bool isLost_ = true;
    bool knowsGlobals_ = false;
    std::map<std::uint32_t, WaylandGlobal> globals_;
    Signal<WaylandGlobal> appeared_;
    Signal<WaylandGlobal> gone_;
    Signal<> changed_;
    Signal<> lost_;
    Handle firstList_;
};

} // namespace lorvane
