// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/EscapeWatch.h"

namespace lorvane {

namespace {

/// With both of these held Escape means something to the desktop itself.
constexpr std::uint32_t systemChord = modifierFlag::command | modifierFlag::option;

bool counts(const KeyEvent& event) {
    return event.keyCode == keyCode::escape && (event.flags & systemChord) != systemChord;
}

} // namespace

void EscapeWatch::watch(bool wanted) {
    if (wanted == isWatching()) {
        return;
    }
    if (!wanted) {
        monitors_.clear();
        return;
    }
    monitors_.push_back(events_.addGlobalMonitor(KeyEventKind::keyDown, [this](const KeyEvent& event) {
        if (counts(event)) {
            queueReaction();
        }
    }));
    monitors_.push_back(events_.addLocalMonitor(KeyEventKind::keyDown, [this](const KeyEvent& event) {
        const bool escape = counts(event);
        if (escape) {
            queueReaction();
        }
        return escape;
    }));
}

void EscapeWatch::queueReaction() {
    reaction_ = clock_.after(Duration::zero(), [this] {
        if (onEscape) {
            onEscape();
        }
    });
}

} // namespace lorvane
