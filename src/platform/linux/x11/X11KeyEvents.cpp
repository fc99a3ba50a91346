// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11KeyEvents.h"

#include "base/PreferenceCatalogue.h"

#include <algorithm>
#include <vector>

namespace lorvane {

namespace {

/// How often the state of a key that is believed down is asked for.
constexpr Duration statePeriod = std::chrono::milliseconds(100);
constexpr std::size_t keptPresses = 16;

} // namespace

X11KeyEvents::X11KeyEvents(X11Connection& connection, const Foundation& foundation,
                           std::function<bool()> programHasFocus)
    : connection_(connection), clock_(foundation.clock), preferences_(foundation.preferences),
      programHasFocus_(std::move(programHasFocus)), raw_(connection, clock_) {
    keyboards_ = raw_.onKeyboardsChanged([this] { reconcile(); });
    lost_ = connection_.onLost([this] { releaseEverything(); });
    if (!isWatchingPossible()) {
        foundation.log.diagLog("[tirra-x11] keys cannot be watched: the display has no XInput 2.2");
    }
}

Handle X11KeyEvents::addGlobalMonitor(KeyEventKind kind, std::function<void(const KeyEvent&)> observer) {
    return monitors_.addGlobal(kind, std::move(observer));
}

Handle X11KeyEvents::addLocalMonitor(KeyEventKind kind, std::function<bool(const KeyEvent&)> observer) {
    return monitors_.addLocal(kind, std::move(observer));
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
    if (watch == static_cast<bool>(watch_) || !isWatchingPossible()) {
        return;
    }
    if (watch) {
        watch_ = raw_.watch([this](const X11KeyEdge& edge) { handleEdge(edge); });
        learnWhatIsHeld();
    } else {
        watch_.reset();
        held_ = HeldKeys();
        stateWatch_.reset();
    }
}

void X11KeyEvents::learnWhatIsHeld() {
    for (const XDeviceId device : raw_.keyboards().ofUser()) {
        const auto keys = raw_.keyboards().keysDown(device).value_or(X11Keyboards::Keys());
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

std::optional<XKeyCode> X11KeyEvents::extraKey() const {
    return extraKeyFromName(preferences_.get(preference::extraKey));
}

void X11KeyEvents::handleEdge(const X11KeyEdge& edge) {
    const KeyMeaning meaning = meaningOf(edge.key, extraKey());
    if (meaning.sort == KeyMeaning::Sort::modifier) {
        const bool moved = edge.isPress ? held_.press(edge.device, edge.key, meaning.mask)
                                        : held_.release(edge.device, edge.key);
        watchHeldKeys();
        if (moved) {
            deliverFlags(edge.key, edge.time);
        }
    } else if (edge.isPress && meaning.sort == KeyMeaning::Sort::other) {
        handleKeyDown({KeyEventKind::keyDown, meaning.code, held_.flags(), edge.time},
                      {edge.key, edge.serverTime});
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
        const auto keys = raw_.keyboards().keysDown(held.device);
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
