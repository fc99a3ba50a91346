// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/XcbConnection.h"

#include <QPointer>
#include <QSocketNotifier>
#include <QStringList>

#include <algorithm>
#include <cstdlib>
#include <poll.h>
#include <sys/types.h>

#include <xcb/res.h>
#include <xcb/xfixes.h>

namespace lorvane {

namespace {

struct Freed {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Owned = std::unique_ptr<T, Freed>;

template <typename Event>
const Event& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const Event&>(event);
}

/// The window whose handler an event is for.
xcb_window_t windowOf(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7f) {
    case XCB_SELECTION_CLEAR:
        return as<xcb_selection_clear_event_t>(event).owner;
    case XCB_SELECTION_REQUEST:
        return as<xcb_selection_request_event_t>(event).owner;
    case XCB_SELECTION_NOTIFY:
        return as<xcb_selection_notify_event_t>(event).requestor;
    case XCB_PROPERTY_NOTIFY:
        return as<xcb_property_notify_event_t>(event).window;
    case XCB_DESTROY_NOTIFY:
        return as<xcb_destroy_notify_event_t>(event).window;
    default:
        return XCB_WINDOW_NONE;
    }
}

} // namespace

template <typename Reply, typename Cookie>
auto XcbConnection::ask(Reply* (*reply)(xcb_connection_t*, Cookie, xcb_generic_error_t**), Cookie cookie) {
    xcb_generic_error_t* error = nullptr;
    Owned<Reply> answer(reply(connection_, cookie, &error));
    const Owned<xcb_generic_error_t> dropped(error);
    // Waiting for the answer has emptied the socket: events may have come with it that no notifier will tell
    // of.
    dispatchSoon();
    return answer;
}

std::unique_ptr<XcbConnection> XcbConnection::open() {
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    auto made = std::unique_ptr<XcbConnection>(new XcbConnection(connection));
    if (xcb_connection_has_error(connection) != 0 || !made->setUp()) {
        return nullptr;
    }
    return made;
}

XcbConnection::XcbConnection(xcb_connection_t* connection) : connection_(connection) {}

XcbConnection::~XcbConnection() {
    if (notifier_ != nullptr) {
        notifier_->setEnabled(false);
        // It may be the one that is telling us now.
        notifier_->setParent(nullptr);
        notifier_->deleteLater();
    }
    xcb_disconnect(connection_);
}

bool XcbConnection::setUp() {
    const auto* fixes = xcb_get_extension_data(connection_, &xcb_xfixes_id);
    if (fixes == nullptr || fixes->present == 0) {
        return false;
    }
    firstFixesEvent_ = fixes->first_event;
    if (!ask(xcb_xfixes_query_version_reply, xcb_xfixes_query_version(connection_, 5, 0))) {
        return false;
    }
    const auto* res = xcb_get_extension_data(connection_, &xcb_res_id);
    if (res != nullptr && res->present != 0) {
        const auto version = ask(xcb_res_query_version_reply, xcb_res_query_version(connection_, 1, 2));
        knowsProcesses_ = version && (version->server_major > 1 || version->server_minor >= 2);
    }
    notifier_ = new QSocketNotifier(xcb_get_file_descriptor(connection_), QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, [this] { dispatchPending(); });
    return true;
}

xcb_atom_t XcbConnection::atom(const QString& name) {
    if (const auto known = atoms_.constFind(name); known != atoms_.constEnd()) {
        return *known;
    }
    const QByteArray bytes = name.toUtf8();
    const auto answer =
        ask(xcb_intern_atom_reply,
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(bytes.size()), bytes.constData()));
    const xcb_atom_t found = answer ? answer->atom : xcb_atom_t{XCB_ATOM_NONE};
    if (found != XCB_ATOM_NONE) {
        atoms_.insert(name, found);
        names_.insert(found, name);
    }
    return found;
}

QStringList XcbConnection::atomNames(const std::vector<xcb_atom_t>& atoms) {
    std::map<xcb_atom_t, xcb_get_atom_name_cookie_t> asked;
    for (const auto atom : atoms) {
        if (!names_.contains(atom) && !asked.contains(atom)) {
            asked.emplace(atom, xcb_get_atom_name(connection_, atom));
        }
    }
    for (const auto& [atom, cookie] : asked) {
        if (const auto answer = ask(xcb_get_atom_name_reply, cookie)) {
            const auto name = QString::fromUtf8(xcb_get_atom_name_name(answer.get()),
                                                xcb_get_atom_name_name_length(answer.get()));
            names_.insert(atom, name);
            atoms_.insert(name, atom);
        }
    }
    QStringList result;
    for (const auto atom : atoms) {
        result.append(names_.value(atom));
    }
    return result;
}

xcb_window_t XcbConnection::makeWindow() {
    const xcb_window_t window = xcb_generate_id(connection_);
    const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen->root, -10, -10, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    return window;
}

void XcbConnection::destroyWindow(xcb_window_t window) {
    xcb_destroy_window(connection_, window);
    flush();
}

bool XcbConnection::isOurs(xcb_window_t window) const {
    const auto* setup = xcb_get_setup(connection_);
    return (window & ~setup->resource_id_mask) == setup->resource_id_base;
}

xcb_window_t XcbConnection::ownerOf(xcb_atom_t selection) {
    const auto answer = ask(xcb_get_selection_owner_reply, xcb_get_selection_owner(connection_, selection));
    return answer ? answer->owner : xcb_window_t{XCB_WINDOW_NONE};
}

std::optional<ProcessId> XcbConnection::processOf(xcb_window_t window) {
    if (!knowsProcesses_) {
        return std::nullopt;
    }
    const xcb_res_client_id_spec_t question{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto answer =
        ask(xcb_res_query_client_ids_reply, xcb_res_query_client_ids(connection_, 1, &question));
    if (!answer) {
        return std::nullopt;
    }
    for (auto ids = xcb_res_query_client_ids_ids_iterator(answer.get()); ids.rem > 0;
         xcb_res_client_id_value_next(&ids)) {
        if ((ids.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0 &&
            xcb_res_client_id_value_value_length(ids.data) > 0) {
            const ProcessId process = *xcb_res_client_id_value_value(ids.data);
            return process > 0 ? std::optional(process) : std::nullopt;
        }
    }
    return std::nullopt;
}

WindowProperty XcbConnection::property(xcb_window_t window, xcb_atom_t name, qsizetype mostBytes,
                                       bool remove) {
    const auto answer =
        ask(xcb_get_property_reply,
            xcb_get_property(connection_, remove ? 1 : 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0,
                             static_cast<std::uint32_t>(std::max<qsizetype>(mostBytes, 0) / 4 + 1)));
    WindowProperty result;
    if (!answer || answer->type == XCB_ATOM_NONE) {
        return result;
    }
    result.exists = true;
    result.type = answer->type;
    result.format = answer->format;
    const qsizetype length = xcb_get_property_value_length(answer.get());
    result.bytes = QByteArray(static_cast<const char*>(xcb_get_property_value(answer.get())), length);
    result.cut = answer->bytes_after > 0;
    if (result.cut && remove) {
        // The server removes only what was read to its end.
        xcb_delete_property(connection_, window, name);
    }
    return result;
}

qsizetype XcbConnection::mostBytesInRequest() const {
    constexpr qsizetype header = 64;
    return static_cast<qsizetype>(xcb_get_maximum_request_length(connection_)) * 4 - header;
}

void XcbConnection::flush() { xcb_flush(connection_); }

Handle XcbConnection::handle(xcb_window_t window, Handler handler) {
    handlers_[window] = std::make_shared<Handler>(std::move(handler));
    return Handle([self = QPointer<XcbConnection>(this), window] {
        if (self) {
            self->handlers_.erase(window);
        }
    });
}

void XcbConnection::watchSelection(xcb_window_t window, xcb_atom_t selection) {
    xcb_xfixes_select_selection_input(connection_, window, selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
}

void XcbConnection::dispatchSoon() {
    if (!dispatchIsDue_) {
        dispatchIsDue_ = true;
        QMetaObject::invokeMethod(
            this,
            [this] {
                dispatchIsDue_ = false;
                dispatchPending();
            },
            Qt::QueuedConnection);
    }
}

void XcbConnection::dispatchPending() {
    // A handler may end everything, this connection too.
    const QPointer<XcbConnection> self(this);
    while (self) {
        const Owned<xcb_generic_event_t> event(xcb_poll_for_event(connection_));
        if (!event) {
            break;
        }
        dispatch(*event);
    }
    if (!self) {
        return;
    }
    if (xcb_connection_has_error(connection_) != 0) {
        notifier_->setEnabled(false);
        return;
    }
    flush();
}

void XcbConnection::dispatch(const xcb_generic_event_t& event) {
    const auto kind = event.response_type & 0x7f;
    if (kind == firstFixesEvent_ + XCB_XFIXES_SELECTION_NOTIFY) {
        const auto& change = as<xcb_xfixes_selection_notify_event_t>(event);
        const bool ended = change.subtype != XCB_XFIXES_SELECTION_EVENT_SET_SELECTION_OWNER;
        selectionChanged.emit({change.selection, ended ? xcb_window_t{XCB_WINDOW_NONE} : change.owner,
                               change.selection_timestamp, event.full_sequence});
        return;
    }
    const auto window = windowOf(event);
    if (window == XCB_WINDOW_NONE) {
        return; // errors among them: a window of another program that has gone
    }
    if (const auto found = handlers_.find(window); found != handlers_.end()) {
        const auto handler = found->second;
        (*handler)(event);
    } else {
        foreign.emit(event);
    }
}

void XcbConnection::runUntil(const std::function<bool()>& done, Clock& clock, Duration bound) {
    const Instant end = clock.now() + bound;
    for (;;) {
        dispatchPending();
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - clock.now());
        if (done() || left.count() <= 0 || xcb_connection_has_error(connection_) != 0) {
            return;
        }
        pollfd socket{xcb_get_file_descriptor(connection_), POLLIN, 0};
        poll(&socket, 1, static_cast<int>(left.count()));
    }
}

} // namespace lorvane
