// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11Connection.h"

#include <xcb/xinput.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace lorvane {

namespace {

/// Since XInput 2.2 raw events also arrive while another client has grabbed the keyboard.
constexpr X11Connection::Version wantedInput{2, 2};

xcb_window_t rootOf(xcb_connection_t* xcb, int screenNumber) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(xcb));
    for (int i = 0; i < screenNumber && screens.rem > 1; ++i) {
        xcb_screen_next(&screens);
    }
    return screens.data->root;
}

} // namespace

X11Connection::X11Connection(DiagnosticLog& log, const QByteArray& display) : log_(log) {
    int screenNumber = 0;
    xcb_ = xcb_connect(display.isEmpty() ? nullptr : display.constData(), &screenNumber);
    if (!isAlive()) {
        lossReported_ = true;
        log_.diagLog("[tirra-x11] no X display answers");
        return;
    }
    root_ = rootOf(xcb_, screenNumber);
    agreeOnExtensions();
    notifier_ = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(xcb_), QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] { drain(); });
}

X11Connection::~X11Connection() {
    notifier_.reset();
    xcb_disconnect(xcb_);
}

void X11Connection::agreeOnExtensions() {
    if (hasExtension(&xcb_input_id)) {
        const auto version =
            reply(xcb_input_xi_query_version_reply,
                  xcb_input_xi_query_version(xcb_, static_cast<std::uint16_t>(wantedInput.major),
                                             static_cast<std::uint16_t>(wantedInput.minor)));
        inputVersion_ = version ? Version{version->major_version, version->minor_version} : Version{};
    }
    hasXkb_ = xkb_x11_setup_xkb_extension(xcb_, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                          XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr,
                                          nullptr) == 1;
}

bool X11Connection::hasExtension(xcb_extension_t* extension) { return opcodeOf(extension) != 0; }

std::uint8_t X11Connection::opcodeOf(xcb_extension_t* extension) {
    const auto* const data = isAlive() ? xcb_get_extension_data(xcb_, extension) : nullptr;
    return data && data->present ? data->major_opcode : std::uint8_t{0};
}

xcb_atom_t X11Connection::atom(const char* name) {
    const QByteArray key(name);
    if (const auto known = atoms_.constFind(key); known != atoms_.constEnd()) {
        return *known;
    }
    const auto answer =
        reply(xcb_intern_atom_reply,
              xcb_intern_atom(xcb_, 0, static_cast<std::uint16_t>(key.size()), key.constData()));
    if (!answer) {
        return XCB_ATOM_NONE;
    }
    atoms_.insert(key, answer->atom);
    return answer->atom;
}

int X11Connection::errorOf(xcb_void_cookie_t cookie) {
    const XcbReply<xcb_generic_error_t> error(xcb_request_check(xcb_, cookie));
    drainSoon();
    if (!isAlive()) {
        return displayGone;
    }
    return error ? error->error_code : 0;
}

void X11Connection::sync() {
    (void)reply(xcb_get_input_focus_reply, xcb_get_input_focus(xcb_));
    drain();
}

void X11Connection::drain() {
    while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(xcb_)}) {
        // Type 0 is the error of a request whose outcome nobody waits for: a window that closed meanwhile.
        if (event->response_type != 0) {
            events_.emit(*event);
        }
    }
    if (!isAlive()) {
        reportLoss();
    }
}

void X11Connection::drainSoon() {
    if (drainQueued_) {
        return;
    }
    drainQueued_ = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            drainQueued_ = false;
            drain();
        },
        Qt::QueuedConnection);
}

void X11Connection::reportLoss() {
    if (lossReported_) {
        return;
    }
    lossReported_ = true;
    notifier_->setEnabled(false);
    log_.diagLog("[tirra-x11] the X display is gone: no keys are seen or posted any more");
    lost_.emit();
}

} // namespace lorvane
