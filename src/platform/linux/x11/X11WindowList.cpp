// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11WindowList.h"

#include <cstring>

namespace lorvane {

namespace {

constexpr std::uint32_t longestProperty = 4096; // in units of four bytes

QByteArray property(X11Connection& connection, xcb_window_t window, const char* name) {
    const auto cookie = xcb_get_property(connection.xcb(), 0, window, connection.atom(name),
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, longestProperty);
    const auto reply = connection.reply<xcb_get_property_reply_t>(xcb_get_property_reply, cookie);
    if (!reply) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            xcb_get_property_value_length(reply.get())};
}

std::vector<std::uint32_t> numbers(const QByteArray& bytes) {
    std::vector<std::uint32_t> values(static_cast<std::size_t>(bytes.size()) / sizeof(std::uint32_t));
    if (!values.empty()) {
        std::memcpy(values.data(), bytes.constData(), values.size() * sizeof(std::uint32_t));
    }
    return values;
}

QString titleOf(X11Connection& connection, xcb_window_t window) {
    const QByteArray modern = property(connection, window, "_NET_WM_NAME");
    return modern.isEmpty() ? QString::fromLatin1(property(connection, window, "WM_NAME"))
                            : QString::fromUtf8(modern);
}

// WM_CLASS holds two texts, each ended by a zero: the instance and the class.
QString classOf(X11Connection& connection, xcb_window_t window) {
    return QString::fromLatin1(property(connection, window, "WM_CLASS").split('\0').value(1));
}

} // namespace

std::vector<ListedWindow> listWindows(X11Connection& connection) {
    std::vector<ListedWindow> windows;
    for (const xcb_window_t window : numbers(property(connection, connection.root(), "_NET_CLIENT_LIST"))) {
        const auto process = numbers(property(connection, window, "_NET_WM_PID"));
        if (!process.empty()) {
            windows.push_back({process.front(), titleOf(connection, window), classOf(connection, window)});
        }
    }
    return windows;
}

} // namespace lorvane
