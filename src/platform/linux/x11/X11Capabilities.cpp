// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11Capabilities.h"

#include <cstring>

#include <xcb/res.h>
#include <xcb/xtest.h>

namespace lorvane {

namespace {

QByteArray property(X11Connection& connection, xcb_window_t window, const char* name) {
    constexpr std::uint32_t longest = 64;
    const auto answer = connection.reply(xcb_get_property_reply,
                                         xcb_get_property(connection.xcb(), 0, window, connection.atom(name),
                                                          XCB_GET_PROPERTY_TYPE_ANY, 0, longest));
    return answer ? QByteArray(static_cast<const char*>(xcb_get_property_value(answer.get())),
                               xcb_get_property_value_length(answer.get()))
                  : QByteArray();
}

/// By the window that a manager of the Extended Window Manager Hints keeps for this.
QString windowManagerOf(X11Connection& connection) {
    const QByteArray window = property(connection, connection.root(), "_NET_SUPPORTING_WM_CHECK");
    xcb_window_t check = XCB_WINDOW_NONE;
    if (window.size() < qsizetype{sizeof check}) {
        return {};
    }
    std::memcpy(&check, window.constData(), sizeof check);
    return QString::fromUtf8(property(connection, check, "_NET_WM_NAME"));
}

} // namespace

bool X11Capabilities::canWatchKeys() const {
    return displayAnswers && inputVersion >= X11Connection::Version{2, 2};
}

X11Capabilities capabilitiesOf(X11Connection& connection) {
    if (!connection.isAlive()) {
        return {};
    }
    return {true,
            connection.inputVersion(),
            connection.hasExtension(&xcb_test_id),
            connection.hasXkb(),
            connection.hasExtension(&xcb_res_id),
            windowManagerOf(connection)};
}

} // namespace lorvane
