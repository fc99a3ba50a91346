// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wayland/WaylandConnection.h"

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>

namespace lorvane {

namespace {

/// A callback of the compositor that is waited for.
struct Callback {
    wl_callback* proxy = nullptr;
    std::function<void()> done;
};

constexpr wl_callback_listener callbackListener{[](void* data, wl_callback*, std::uint32_t) {
    // Its handle may end inside.
    const auto done = std::exchange(static_cast<Callback*>(data)->done, nullptr);
    if (done) {
        done();
    }
}};

} // namespace

const wl_registry_listener WaylandConnection::registryListener{
    [](void* self, wl_registry*, std::uint32_t name, const char* interface, std::uint32_t version) {
        static_cast<WaylandConnection*>(self)->globalCame({name, interface, version});
    },
    [](void* self, wl_registry*, std::uint32_t name) {
        static_cast<WaylandConnection*>(self)->globalWent(name);
    }};

WaylandConnection::WaylandConnection(DiagnosticLog& log, const QByteArray& display)
    : log_(log), display_(wl_display_connect(display.isEmpty() ? nullptr : display.constData())) {
    if (display_ == nullptr) {
        return;
    }
    isLost_ = false;
    registry_ = wl_display_get_registry(display_);
    wl_registry_add_listener(registry_, &registryListener, this);
    firstList_ = afterServer([this] {
        knowsGlobals_ = true;
        changed_.emit();
    });
    watchSocket();
    flush();
}

WaylandConnection::~WaylandConnection() {
    if (display_ == nullptr) {
        return;
    }
    firstList_.reset();
    delete readable_;
    delete writable_;
    wl_registry_destroy(registry_);
    if (isAlive()) {
        wl_display_flush(display_);
    }
    wl_display_disconnect(display_);
}

void WaylandConnection::watchSocket() {
    auto* const loop = QAbstractEventDispatcher::instance();
    if (loop == nullptr) {
        return;
    }
    const int socket = wl_display_get_fd(display_);
    readable_ = new QSocketNotifier(socket, QSocketNotifier::Read);
    writable_ = new QSocketNotifier(socket, QSocketNotifier::Write);
    writable_->setEnabled(false);
    connect(readable_, &QSocketNotifier::activated, this, [this] { readAndTell(); });
    connect(writable_, &QSocketNotifier::activated, this, [this] { flush(); });
    connect(loop, &QAbstractEventDispatcher::aboutToBlock, this, [this] { flush(); });
}

bool WaylandConnection::awaitGlobals(const Clock& clock, Duration bound) {
    runUntil([this] { return knowsGlobals_; }, clock, bound);
    return knowsGlobals_;
}

bool WaylandConnection::offers(const QByteArray& interface, std::uint32_t leastVersion) const {
    return std::any_of(globals_.begin(), globals_.end(), [&](const auto& entry) {
        return entry.second.interface == interface && entry.second.version >= leastVersion;
    });
}

Handle WaylandConnection::onGlobal(const QByteArray& interface,
                                   std::function<void(const WaylandGlobal&)> appeared) {
    Handle handle = appeared_.subscribe([interface, appeared](const WaylandGlobal& global) {
        if (global.interface == interface) {
            appeared(global);
        }
    });
    const auto present = globals_;
    for (const auto& [name, global] : present) {
        if (global.interface == interface) {
            appeared(global);
        }
    }
    return handle;
}

void WaylandConnection::globalCame(WaylandGlobal global) {
    const auto [entry, isNew] = globals_.insert_or_assign(global.name, std::move(global));
    const WaylandGlobal told = entry->second;
    appeared_.emit(told);
    if (knowsGlobals_) {
        changed_.emit();
    }
}

void WaylandConnection::globalWent(std::uint32_t name) {
    const auto found = globals_.extract(name);
    if (!found) {
        return;
    }
    gone_.emit(found.mapped());
    if (knowsGlobals_) {
        changed_.emit();
    }
}

void* WaylandConnection::bindFirst(const wl_interface& interface, std::uint32_t mostVersion,
                                   std::uint32_t leastVersion) {
    const auto found = std::find_if(globals_.begin(), globals_.end(), [&](const auto& entry) {
        return entry.second.interface == interface.name && entry.second.version >= leastVersion;
    });
    return found == globals_.end() ? nullptr : bindName(found->first, interface, mostVersion);
}

void* WaylandConnection::bindName(std::uint32_t name, const wl_interface& interface,
                                  std::uint32_t mostVersion) {
    const auto found = globals_.find(name);
    if (found == globals_.end() || found->second.interface != interface.name || isLost_) {
        return nullptr;
    }
    const auto known = static_cast<std::uint32_t>(interface.version);
    const std::uint32_t version = std::min({found->second.version, mostVersion, known});
    return wl_registry_bind(registry_, name, &interface, version);
}

void WaylandConnection::flush() {
    if (isLost_) {
        return;
    }
    const bool isFull = wl_display_flush(display_) < 0 && errno == EAGAIN;
    if (writable_ != nullptr && writable_->isEnabled() != isFull) {
        writable_->setEnabled(isFull);
    }
    if (wl_display_get_error(display_) != 0) {
        // The reason of a refusal may still lie in the socket, and the caller is told of nothing inside its
        // own request.
        QMetaObject::invokeMethod(
            this, [this] { readAndTell(); }, Qt::QueuedConnection);
    }
}

void WaylandConnection::readAndTell() {
    if (isLost_) {
        return;
    }
    // What another call has read and not told comes first; the socket is read only when nothing waits.
    while (wl_display_prepare_read(display_) != 0) {
        if (wl_display_dispatch_pending(display_) < 0) {
            lose();
            return;
        }
    }
    pollfd socket{wl_display_get_fd(display_), POLLIN, 0};
    if (poll(&socket, 1, 0) > 0) {
        (void)wl_display_read_events(display_);
    } else {
        wl_display_cancel_read(display_);
    }
    (void)wl_display_dispatch_pending(display_);
    if (wl_display_get_error(display_) != 0) {
        lose();
    } else {
        flush();
    }
}

Handle WaylandConnection::afterServer(std::function<void()> done) {
    if (isLost_) {
        return {};
    }
    auto callback = std::make_shared<Callback>(Callback{wl_display_sync(display_), std::move(done)});
    wl_callback_add_listener(callback->proxy, &callbackListener, callback.get());
    return Handle([callback] { wl_callback_destroy(callback->proxy); });
}

void WaylandConnection::runUntil(const std::function<bool()>& done, const Clock& clock, Duration bound) {
    const Instant end = clock.now() + bound;
    while (!isLost_ && !done()) {
        flush();
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - clock.now());
        if (left.count() <= 0) {
            return;
        }
        pollfd socket{wl_display_get_fd(display_), POLLIN, 0};
        poll(&socket, 1, static_cast<int>(left.count()));
        readAndTell();
    }
}

void WaylandConnection::lose() {
    if (isLost_) { // told from inside an event
        return;
    }
    isLost_ = true;
    if (readable_ != nullptr) {
        readable_->setEnabled(false);
        writable_->setEnabled(false);
    }
    log_.diagLog(QStringLiteral("[tirra-wayland] the compositor is gone: ") + reasonOfLoss());
    globals_.clear();
    lost_.emit();
}

QString WaylandConnection::reasonOfLoss() const {
    const int error = wl_display_get_error(display_);
    if (error != EPROTO) {
        return QString::fromLocal8Bit(std::strerror(error));
    }
    const wl_interface* interface = nullptr;
    std::uint32_t object = 0;
    const std::uint32_t code = wl_display_get_protocol_error(display_, &interface, &object);
    return QStringLiteral("it refused a request (error %1 of %2)")
        .arg(code)
        .arg(QString::fromLatin1(interface != nullptr ? interface->name : "an object that had gone"));
}

} // namespace lorvane
