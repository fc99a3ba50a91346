// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/windows/Taskbar.h"

#include <QGuiApplication>
#include <QWindow>

#include <cstdlib>
#include <cstring>

#include <xcb/xcb.h>

namespace lorvane {

namespace {

xcb_atom_t atom(xcb_connection_t* xcb, const char* name) {
    const auto cookie = xcb_intern_atom(xcb, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    auto* const reply = xcb_intern_atom_reply(xcb, cookie, nullptr);
    const xcb_atom_t found = reply == nullptr ? static_cast<xcb_atom_t>(XCB_ATOM_NONE) : reply->atom;
    std::free(reply);
    return found;
}

} // namespace

void setInTaskbar(const QWindow& window, bool wanted) {
    auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr) {
        return;
    }
    xcb_connection_t* const xcb = x11->connection();
    constexpr std::uint32_t remove = 0;
    constexpr std::uint32_t add = 1;
    constexpr std::uint32_t fromApplication = 1;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = static_cast<xcb_window_t>(window.winId());
    message.type = atom(xcb, "_NET_WM_STATE");
    message.data.data32[0] = wanted ? remove : add;
    message.data.data32[1] = atom(xcb, "_NET_WM_STATE_SKIP_TASKBAR");
    message.data.data32[2] = atom(xcb, "_NET_WM_STATE_SKIP_PAGER");
    message.data.data32[3] = fromApplication;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(xcb)).data->root;
    xcb_send_event(xcb, 0, root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(xcb);
}

} // namespace lorvane
