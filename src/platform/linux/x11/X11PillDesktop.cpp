// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11PillDesktop.h"

#include "platform/linux/x11/X11Properties.h"
#include "platform/linux/x11/X11Screens.h"
#include "platform/linux/x11/X11StackedWindows.h"

#include <QGuiApplication>

#include <xcb/randr.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

namespace lorvane {

namespace {

constexpr std::uint8_t sentByAnotherClient = 0x80;

int typeOf(const xcb_generic_event_t& event) { return event.response_type & ~sentByAnotherClient; }

std::uint8_t firstEventOf(X11Connection& connection, xcb_extension_t* extension) {
    const auto* const data =
        connection.isAlive() ? xcb_get_extension_data(connection.xcb(), extension) : nullptr;
    return data != nullptr && data->present != 0 ? data->first_event : std::uint8_t{0};
}

/// Its windows are made through a connection of its own: a round trip there, and the display knows them all.
void waitForWindowsOfQt() {
    const auto* const application = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
    const auto* const native =
        application == nullptr ? nullptr : application->nativeInterface<QNativeInterface::QX11Application>();
    if (native != nullptr) {
        auto* const xcb = native->connection();
        std::free(xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
    }
}

} // namespace

X11PillDesktop::X11PillDesktop(X11Connection& connection) : connection_(connection) {
    events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handleEvent(event); });
    if (!connection_.isAlive()) {
        return;
    }
    // The same mask that the watch of the active window selects: a later choice replaces an earlier one.
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection_.xcb(), connection_.root(), XCB_CW_EVENT_MASK, &mask);
    screenEvent_ = firstEventOf(connection_, &xcb_randr_id);
    if (screenEvent_ != 0) {
        xcb_randr_select_input(connection_.xcb(), connection_.root(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                                   XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    }
    connection_.flush();
}

QPoint X11PillDesktop::pointer() {
    const auto answer =
        connection_.reply(xcb_query_pointer_reply, xcb_query_pointer(connection_.xcb(), connection_.root()));
    return answer ? QPoint(answer->root_x, answer->root_y) : QPoint();
}

std::vector<DesktopScreen> X11PillDesktop::screens() { return readScreens(connection_); }

std::optional<std::vector<DesktopWindow>> X11PillDesktop::windows() {
    return readStackedWindows(connection_);
}

bool X11PillDesktop::isOwn(const DesktopWindow& window) {
    return processOfWindow(connection_, window.id) == QCoreApplication::applicationPid();
}

Handle X11PillDesktop::onChange(std::function<void(DesktopChange)> observer) {
    return changed_.subscribe(std::move(observer));
}

void X11PillDesktop::handleEvent(const xcb_generic_event_t& event) {
    const int type = typeOf(event);
    if (type == XCB_PROPERTY_NOTIFY) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window == connection_.root()) {
            tell(change.atom);
        }
    } else if (screenEvent_ != 0 && (type == screenEvent_ + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
                                     type == screenEvent_ + XCB_RANDR_NOTIFY)) {
        changed_.emit(DesktopChange::screens);
    }
}

void X11PillDesktop::tell(xcb_atom_t property) {
    if (property == connection_.atom("_NET_ACTIVE_WINDOW")) {
        changed_.emit(DesktopChange::activeWindow);
    } else if (property == connection_.atom("_NET_CURRENT_DESKTOP")) {
        changed_.emit(DesktopChange::workspace);
    } else if (property == connection_.atom("_NET_WORKAREA")) {
        changed_.emit(DesktopChange::screens);
    }
}

X11PillSurface::X11PillSurface(X11Connection& connection)
    : connection_(connection), selection_(connection.atom("_NET_WM_CM_S0")) {
    events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handleEvent(event); });
    selectionEvent_ = firstEventOf(connection_, &xcb_xfixes_id);
    if (selectionEvent_ != 0) {
        // The server refuses what a client asks of XFixes before it has asked for the version.
        (void)connection_.reply(
            xcb_xfixes_query_version_reply,
            xcb_xfixes_query_version(connection_.xcb(), XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION));
        xcb_xfixes_select_selection_input(connection_.xcb(), connection_.root(), selection_,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }
    isComposited_ = readComposited();
}

void X11PillSurface::acceptInputOnlyIn(std::uint32_t window, const QRect& area) {
    waitForWindowsOfQt();
    if (!connection_.hasExtension(&xcb_shape_id)) {
        return;
    }
    const xcb_rectangle_t accepted{static_cast<std::int16_t>(area.x()), static_cast<std::int16_t>(area.y()),
                                   static_cast<std::uint16_t>(area.width()),
                                   static_cast<std::uint16_t>(area.height())};
    xcb_shape_rectangles(connection_.xcb(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED,
                         window, 0, 0, 1, &accepted);
    connection_.flush();
}

bool X11PillSurface::readComposited() {
    const auto owner = connection_.reply(xcb_get_selection_owner_reply,
                                         xcb_get_selection_owner(connection_.xcb(), selection_));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

void X11PillSurface::handleEvent(const xcb_generic_event_t& event) {
    if (selectionEvent_ == 0 || typeOf(event) != selectionEvent_ + XCB_XFIXES_SELECTION_NOTIFY) {
        return;
    }
    const auto& notice = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
    if (notice.selection != selection_) {
        return;
    }
    const bool composited = readComposited();
    if (composited != isComposited_) {
        isComposited_ = composited;
        changed_.emit();
    }
}

} // namespace lorvane
