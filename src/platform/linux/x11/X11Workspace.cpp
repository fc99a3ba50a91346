// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11Workspace.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QList>

#include <cstring>

#include <xcb/res.h>

namespace lorvane {

namespace {

/// In units of 32 bits; names are cut off there.
constexpr std::uint32_t longestProperty = 256;

QString procFile(ProcessId process, const char* name) {
    return QStringLiteral("/proc/%1/%2").arg(process).arg(QLatin1String(name));
}

bool isRunning(ProcessId process) { return process > 0 && QFileInfo::exists(procFile(process, "stat")); }

QString programOf(ProcessId process) {
    return process > 0 ? QFileInfo(QFile::symLinkTarget(procFile(process, "exe"))).fileName() : QString();
}

} // namespace

X11Workspace::X11Workspace(X11Connection& connection, DesktopEntries entries)
    : connection_(connection), entries_(std::move(entries)) {
    events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handleEvent(event); });
    lost_ = connection_.onLost([this] { front_.reset(); });
    if (!connection_.isAlive()) {
        return;
    }
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection_.xcb(), connection_.root(), XCB_CW_EVENT_MASK, &mask);
    readActiveWindow();
}

bool X11Workspace::isOwnProcessInFront() const {
    return front_ && front_->processId == QCoreApplication::applicationPid();
}

void X11Workspace::handleEvent(const xcb_generic_event_t& event) {
    constexpr std::uint8_t sentByAnotherClient = 0x80;
    const int type = event.response_type & ~sentByAnotherClient;
    if (type == XCB_PROPERTY_NOTIFY) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window == connection_.root() && change.atom == connection_.atom("_NET_ACTIVE_WINDOW")) {
            readActiveWindow();
        }
    } else if (type == XCB_DESTROY_NOTIFY) {
        const auto& destroyed = reinterpret_cast<const xcb_destroy_notify_event_t&>(event);
        if (destroyed.window == active_) {
            setFront(XCB_WINDOW_NONE, std::nullopt);
        }
    }
}

// A window manager may leave the number of a window that has gone, and the server gives numbers out again: so
// the number alone never tells that nothing has changed.
void X11Workspace::readActiveWindow() {
    const xcb_window_t window = number(connection_.root(), "_NET_ACTIVE_WINDOW").value_or(XCB_WINDOW_NONE);
    if (window == XCB_WINDOW_NONE || !watchForItsEnd(window)) {
        setFront(XCB_WINDOW_NONE, std::nullopt);
    } else {
        setFront(window, applicationOf(window));
    }
}

bool X11Workspace::watchForItsEnd(xcb_window_t window) {
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    return window == connection_.root() || connection_.errorOf(xcb_change_window_attributes_checked(
                                               connection_.xcb(), window, XCB_CW_EVENT_MASK, &mask)) == 0;
}

void X11Workspace::setFront(xcb_window_t window, std::optional<RunningApplication> application) {
    if (active_ != window && active_ != XCB_WINDOW_NONE && active_ != connection_.root()) {
        const std::uint32_t nothing = 0;
        xcb_change_window_attributes(connection_.xcb(), active_, XCB_CW_EVENT_MASK, &nothing);
        connection_.flush();
    }
    if (active_ == window && front_ == application) {
        return;
    }
    active_ = window;
    front_ = std::move(application);
    changed_.emit();
}

RunningApplication X11Workspace::applicationOf(xcb_window_t window) {
    // Two strings, each with its closing zero: the instance and the class.
    const QList<QByteArray> names = property(window, "WM_CLASS").split('\0');
    const ProcessId process = processOf(window);
    const WindowTraits traits{QString::fromUtf8(property(window, "_GTK_APPLICATION_ID")),
                              QString::fromLatin1(names.value(0)), QString::fromLatin1(names.value(1)),
                              programOf(process)};
    if (const auto entry = entries_.find(traits)) {
        return {process, entry->name.isEmpty() ? traits.className : entry->name, entry->id};
    }
    const QString known = traits.className.isEmpty() ? traits.instanceName : traits.className;
    return {process, known.isEmpty() ? traits.program : known, known};
}

// The server's own knowledge goes first: what a window says of itself is wrong in a sandbox that has its own
// process numbers, and the clipboard's requests are told apart by the server's knowledge too.
ProcessId X11Workspace::processOf(xcb_window_t window) {
    const ProcessId client = clientProcessOf(window);
    return isRunning(client) ? client : ProcessId{number(window, "_NET_WM_PID").value_or(0)};
}

ProcessId X11Workspace::clientProcessOf(xcb_window_t window) {
    if (!connection_.hasExtension(&xcb_res_id)) {
        return 0;
    }
    const xcb_res_client_id_spec_t wanted{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto answer = connection_.reply(xcb_res_query_client_ids_reply,
                                          xcb_res_query_client_ids(connection_.xcb(), 1, &wanted));
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

QByteArray X11Workspace::property(xcb_window_t window, const char* name) {
    const auto answer = connection_.reply(
        xcb_get_property_reply, xcb_get_property(connection_.xcb(), 0, window, connection_.atom(name),
                                                 XCB_GET_PROPERTY_TYPE_ANY, 0, longestProperty));
    if (!answer) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(answer.get())),
            xcb_get_property_value_length(answer.get())};
}

std::optional<std::uint32_t> X11Workspace::number(xcb_window_t window, const char* name) {
    const QByteArray bytes = property(window, name);
    if (bytes.size() < qsizetype{sizeof(std::uint32_t)}) {
        return std::nullopt;
    }
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.constData(), sizeof value);
    return value;
}

} // namespace lorvane
