// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11Properties.h"

#include <QFileInfo>

#include <cstring>

#include <xcb/res.h>

namespace lorvane {

namespace {

/// In units of 32 bits; what is longer is cut off there.
constexpr std::uint32_t longestProperty = 4096;

bool isRunning(ProcessId process) {
    return process > 0 && QFileInfo::exists(QStringLiteral("/proc/%1/stat").arg(process));
}

/// Whose connection made the window, as the X server knows it (XRes); 0 when it does not.
ProcessId clientProcessOf(X11Connection& connection, xcb_window_t window) {
    if (!connection.hasExtension(&xcb_res_id)) {
        return 0;
    }
    const xcb_res_client_id_spec_t wanted{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto answer = connection.reply(xcb_res_query_client_ids_reply,
                                         xcb_res_query_client_ids(connection.xcb(), 1, &wanted));
    if (!answer) {
        return 0;
    }
    for (auto it = xcb_res_query_client_ids_ids_iterator(answer.get()); it.rem > 0;
         xcb_res_client_id_value_next(&it)) {
        const bool isProcess = (it.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0;
        if (isProcess && xcb_res_client_id_value_value_length(it.data) > 0) {
            return *xcb_res_client_id_value_value(it.data);
        }
    }
    return 0;
}

} // namespace

QByteArray windowProperty(X11Connection& connection, xcb_window_t window, const char* name) {
    const auto answer = connection.reply(xcb_get_property_reply,
                                         xcb_get_property(connection.xcb(), 0, window, connection.atom(name),
                                                          XCB_GET_PROPERTY_TYPE_ANY, 0, longestProperty));
    if (!answer) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(answer.get())),
            xcb_get_property_value_length(answer.get())};
}

std::vector<std::uint32_t> windowNumbers(X11Connection& connection, xcb_window_t window, const char* name) {
    const QByteArray bytes = windowProperty(connection, window, name);
    std::vector<std::uint32_t> values(static_cast<std::size_t>(bytes.size()) / sizeof(std::uint32_t));
    if (!values.empty()) {
        std::memcpy(values.data(), bytes.constData(), values.size() * sizeof(std::uint32_t));
    }
    return values;
}

ProcessId processOfWindow(X11Connection& connection, xcb_window_t window) {
    const ProcessId client = clientProcessOf(connection, window);
    if (isRunning(client)) {
        return client;
    }
    const auto said = windowNumbers(connection, window, "_NET_WM_PID");
    return said.empty() ? 0 : ProcessId{said.front()};
}

} // namespace lorvane
