// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11Workspace.h"

#include "platform/linux/x11/X11Properties.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QList>

namespace lorvane {

namespace {

QString programOf(ProcessId process) {
    return process > 0
               ? QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(process))).fileName()
               : QString();
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
    const auto active = windowNumbers(connection_, connection_.root(), "_NET_ACTIVE_WINDOW");
    const xcb_window_t window = active.empty() ? xcb_window_t{XCB_WINDOW_NONE} : active.front();
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
    const QList<QByteArray> names = windowProperty(connection_, window, "WM_CLASS").split('\0');
    const ProcessId process = processOfWindow(connection_, window);
    const WindowTraits traits{QString::fromUtf8(windowProperty(connection_, window, "_GTK_APPLICATION_ID")),
                              QString::fromLatin1(names.value(0)), QString::fromLatin1(names.value(1)),
                              programOf(process)};
    if (const auto entry = entries_.find(traits)) {
        return {process, entry->name.isEmpty() ? traits.className : entry->name, entry->id};
    }
    const QString known = traits.className.isEmpty() ? traits.instanceName : traits.className;
    return {process, known.isEmpty() ? traits.program : known, known};
}

} // namespace lorvane
