// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DiagnosticLog.h"
#include "base/Handle.h"
#include "base/Signal.h"

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QSocketNotifier>

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace lorvane {

struct XcbFree {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename Reply>
using XcbReply = std::unique_ptr<Reply, XcbFree>;

/// A connection of our own to the X server, read by the Qt event loop. Main thread. Nothing here ends the
/// program: an error is an absent reply, and a display that goes away is told once by `lost`, after which
/// every reply is absent.
class X11Connection : public QObject {
 public:
    /// `display` as in $DISPLAY, which is taken when it is empty.
    explicit X11Connection(DiagnosticLog& log, const QByteArray& display = {});
    ~X11Connection() override;

    [[nodiscard]] bool isAlive() const { return xcb_connection_has_error(xcb_) == 0; }
    [[nodiscard]] xcb_connection_t* xcb() const { return xcb_; }
    [[nodiscard]] xcb_window_t root() const { return root_; }
    /// XCB_ATOM_NONE when the display is gone.
    [[nodiscard]] xcb_atom_t atom(const char* name);
    /// The version of XInput agreed on; {0, 0} without it.
    struct Version {
        int major = 0;
        int minor = 0;
        friend auto operator<=>(const Version&, const Version&) = default;
    };
    [[nodiscard]] Version inputVersion() const { return inputVersion_; }
    [[nodiscard]] bool hasXkb() const { return hasXkb_; }
    [[nodiscard]] bool hasExtension(xcb_extension_t* extension);
    [[nodiscard]] std::uint8_t opcodeOf(xcb_extension_t* extension);

    /// Waits for the server's answer (a round trip). Absent when it is an error.
    template <typename Reply, typename Cookie>
    [[nodiscard]] XcbReply<Reply> reply(Reply* (*fetch)(xcb_connection_t*, Cookie, xcb_generic_error_t**),
                                        Cookie cookie) {
        xcb_generic_error_t* error = nullptr;
        XcbReply<Reply> answer(fetch(xcb_, cookie, &error));
        std::free(error);
        drainSoon();
        return answer;
    }
    /// The error code of a checked request; 0 when it was carried out, `displayGone` when nobody can tell.
    static constexpr int displayGone = -1;
    [[nodiscard]] int errorOf(xcb_void_cookie_t cookie);
    void flush() { xcb_flush(xcb_); }
    /// Hands out every event that was caused before this call.
    void sync();

    /// Every event of the server, whoever selected it.
    [[nodiscard]] Handle onEvent(std::function<void(const xcb_generic_event_t&)> observer) {
        return events_.subscribe(std::move(observer));
    }
    [[nodiscard]] Handle onLost(std::function<void()> observer) {
        return lost_.subscribe(std::move(observer));
    }

 private:
    void agreeOnExtensions();
    void drain();
    /// A reply may have brought events along, of which the socket tells nothing any more.
    void drainSoon();
    void reportLoss();

    DiagnosticLog& log_;
    xcb_connection_t* xcb_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
    Version inputVersion_;
    bool hasXkb_ = false;
    QHash<QByteArray, xcb_atom_t> atoms_;
    std::unique_ptr<QSocketNotifier> notifier_;
    bool drainQueued_ = false;
    bool lossReported_ = false;
    Signal<xcb_generic_event_t> events_;
    Signal<> lost_;
};

} // namespace lorvane
