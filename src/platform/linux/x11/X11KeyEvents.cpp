// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11KeyEvents.h"

#include "base/PreferenceCatalogue.h"

#include <algorithm>
#include <array>
#include <vector>

namespace lorvane {

namespace {

/// How often the state of a key that is believed down is asked for.
constexpr Duration statePeriod = std::chrono::milliseconds(100);
constexpr X11Connection::Version rawEventsUnderGrabs{2, 2};
constexpr std::size_t keptPresses = 16;

} // namespace

X11KeyEvents::X11KeyEvents(X11Connection& connection, const Foundation& foundation,
                           std::function<bool()> programHasFocus)
    : connection_(connection), clock_(foundation.clock), preferences_(foundation.preferences),
      programHasFocus_(std::move(programHasFocus)), keyboards_(connection) {
    events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handleEvent(event); });
    lost_ = connection_.onLost([this] { releaseEverything(); });
    if (!isWatchingPossible()) {
        foundation.log.diagLog("[tirra-x11] keys cannot be watched: the display has no XInput 2.2");
    }
}

X11KeyEvents::~X11KeyEvents() { setWatching(false); }

Handle X11KeyEvents::addGlobalMonitor(KeyEventKind kind, std::function<void(const KeyEvent&)> observer) {
    return monitors_.addGlobal(kind, std::move(observer));
}

Handle X11KeyEvents::addLocalMonitor(KeyEventKind kind, std::function<bool(const KeyEvent&)> observer) {
    return monitors_.addLocal(kind, std::move(observer));
}

bool X11KeyEvents::isWatchingPossible() const {
    return connection_.isAlive() && connection_.inputVersion() >= rawEventsUnderGrabs;
}

// A monitor that is replaced by another must not make the watch forget what is held: it ends a moment later.
void X11KeyEvents::monitorsChanged() {
    if (monitors_.size() > 0) {
        stopLater_.reset();
        setWatching(true);
    } else {
        stopLater_ = clock_.after(Duration::zero(), [this] { setWatching(false); });
    }
}

void X11KeyEvents::setWatching(bool watch) {
    if (watch == watching_ || !isWatchingPossible()) {
        return;
    }
    watching_ = watch;
    if (watch) {
        select(XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE,
               XCB_INPUT_XI_EVENT_MASK_HIERARCHY);
        keyboards_.refresh();
        calibrateTime();
        learnWhatIsHeld();
    } else {
        select(0, 0);
        held_ = HeldKeys();
        stateWatch_.reset();
    }
}

void X11KeyEvents::select(std::uint32_t rawMask, std::uint32_t hierarchyMask) {
    struct Selection {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    };
    const std::array selections{Selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, rawMask},
                                Selection{{XCB_INPUT_DEVICE_ALL, 1}, hierarchyMask}};
    xcb_input_xi_select_events(connection_.xcb(), connection_.root(), selections.size(), &selections[0].head);
    connection_.flush();
}

void X11KeyEvents::learnWhatIsHeld() {
    for (const XDeviceId device : keyboards_.ofUser()) {
        const auto keys = keyboards_.keysDown(device).value_or(X11Keyboards::Keys());
        for (std::size_t code = 0; code < keys.size(); ++code) {
            const auto key = static_cast<XKeyCode>(code);
            const KeyMeaning meaning = meaningOf(key, extraKey());
            if (keys[code] && meaning.sort == KeyMeaning::Sort::modifier) {
                held_.press(device, key, meaning.mask);
            }
        }
    }
    watchHeldKeys();
}

// A change of a property is told with the server's time. It waits in the queue, before every key, and was
// sent before the answer that follows it.
void X11KeyEvents::calibrateTime() {
    auto* const xcb = connection_.xcb();
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    calibrationWindow_ = xcb_generate_id(xcb);
    xcb_create_window(xcb, 0, calibrationWindow_, connection_.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    xcb_change_property(xcb, XCB_PROP_MODE_APPEND, calibrationWindow_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        0, nullptr);
    (void)connection_.reply(xcb_get_input_focus_reply, xcb_get_input_focus(xcb));
    calibratedAt_ = clock_.now();
    xcb_destroy_window(xcb, calibrationWindow_);
    connection_.flush();
}

std::optional<XKeyCode> X11KeyEvents::extraKey() const {
    return extraKeyFromName(preferences_.get(preference::extraKey));
}

void X11KeyEvents::handleEvent(const xcb_generic_event_t& event) {
    if (event.response_type == XCB_PROPERTY_NOTIFY) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window == calibrationWindow_) {
            serverTime_.observe(change.time, calibratedAt_);
        }
        return;
    }
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if (!watching_ || generic.response_type != XCB_GE_GENERIC ||
        generic.extension != connection_.opcodeOf(&xcb_input_id)) {
        return;
    }
    const auto& raw = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
    switch (generic.event_type) {
    case XCB_INPUT_RAW_KEY_PRESS:
        return handleRaw(raw, true);
    case XCB_INPUT_RAW_KEY_RELEASE:
        return handleRaw(raw, false);
    case XCB_INPUT_HIERARCHY:
        keyboards_.refresh();
        return reconcile();
    default:
        return;
    }
}

void X11KeyEvents::handleRaw(const xcb_input_raw_key_press_event_t& raw, bool isPress) {
    if ((raw.flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT) != 0 || keyboards_.isSynthetic(raw.sourceid)) {
        return;
    }
    const auto key = static_cast<XKeyCode>(raw.detail);
    const Instant time = serverTime_.at(raw.time, clock_.now());
    const KeyMeaning meaning = meaningOf(key, extraKey());
    if (meaning.sort == KeyMeaning::Sort::modifier) {
        const bool moved =
            isPress ? held_.press(raw.sourceid, key, meaning.mask) : held_.release(raw.sourceid, key);
        watchHeldKeys();
        if (moved) {
            deliverFlags(key, time);
        }
    } else if (isPress && meaning.sort == KeyMeaning::Sort::other) {
        handleKeyDown({KeyEventKind::keyDown, meaning.code, held_.flags(), time}, {key, raw.time});
    }
}

void X11KeyEvents::handleKeyDown(const KeyEvent& event, const KeptPress& press) {
    if (deliver(event)) {
        kept_.push_back(press);
        if (kept_.size() > keptPresses) {
            kept_.pop_front();
        }
    }
}

bool X11KeyEvents::deliver(const KeyEvent& event) { return monitors_.deliver(event, programHasFocus_()); }

void X11KeyEvents::deliverFlags(XKeyCode key, Instant time) {
    deliver({KeyEventKind::flagsChanged, meaningOf(key, extraKey()).code, held_.flags(), time});
}

bool X11KeyEvents::isKeptFromOwnWindows(XKeyCode key, std::uint32_t serverTime) {
    // What was kept by a monitor that has ended since is known already.
    if (monitors_.hasLocal(KeyEventKind::keyDown)) {
        connection_.sync();
    }
    return std::find(kept_.begin(), kept_.end(), KeptPress{key, serverTime}) != kept_.end();
}

void X11KeyEvents::watchHeldKeys() {
    if (held_.all().empty()) {
        stateWatch_.reset();
    } else if (!stateWatch_) {
        stateWatch_ = clock_.every(statePeriod, [this] { reconcile(); });
    }
}

void X11KeyEvents::reconcile() {
    std::vector<HeldKeys::Held> gone;
    for (const HeldKeys::Held& held : held_.all()) {
        const auto keys = keyboards_.keysDown(held.device);
        if (!keys || !(*keys)[held.key]) {
            gone.push_back(held);
        }
    }
    if (gone.empty()) {
        return;
    }
    connection_.sync(); // a release that is on its way tells the true time, so it goes first
    for (const HeldKeys::Held& held : gone) {
        if (held_.endPress(held)) {
            deliverFlags(held.key, clock_.now());
        }
    }
    watchHeldKeys();
}

void X11KeyEvents::releaseEverything() {
    const std::vector<HeldKeys::Held> all = held_.all();
    for (const HeldKeys::Held& held : all) {
        if (held_.endPress(held)) {
            deliverFlags(held.key, clock_.now());
        }
    }
    watchHeldKeys();
}

} // namespace lorvane
