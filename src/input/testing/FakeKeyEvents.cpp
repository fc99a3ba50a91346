// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/testing/FakeKeyEvents.h"

namespace lorvane {

Handle FakeKeyEvents::addGlobalMonitor(KeyEventKind kind, std::function<void(const KeyEvent&)> observer) {
    return monitors_.addGlobal(kind, std::move(observer));
}

Handle FakeKeyEvents::addLocalMonitor(KeyEventKind kind, std::function<bool(const KeyEvent&)> observer) {
    return monitors_.addLocal(kind, std::move(observer));
}

bool FakeKeyEvents::keyDown(int code) { return send({KeyEventKind::keyDown, code, flags(), clock_.now()}); }

void FakeKeyEvents::setDown(int code, std::uint32_t mask, bool down) {
    if (down == down_.contains(code)) {
        return;
    }
    if (down) {
        down_.emplace(code, mask);
    } else {
        down_.erase(code);
    }
    send({KeyEventKind::flagsChanged, code, flags(), clock_.now()});
}

std::uint32_t FakeKeyEvents::flags() const {
    std::uint32_t all = 0;
    for (const auto& [code, mask] : down_) {
        all |= mask;
    }
    return all;
}

} // namespace lorvane
