// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/testing/FakeKeyEvents.h"

#include <vector>

namespace lorvane {

Handle FakeKeyEvents::addGlobalMonitor(KeyEventKind kind, std::function<void(const KeyEvent&)> observer) {
    return add(kind, false, [observer = std::move(observer)](const KeyEvent& event) {
        observer(event);
        return false;
    });
}

Handle FakeKeyEvents::addLocalMonitor(KeyEventKind kind, std::function<bool(const KeyEvent&)> observer) {
    return add(kind, true, std::move(observer));
}

Handle FakeKeyEvents::add(KeyEventKind kind, bool local, std::function<bool(const KeyEvent&)> observer) {
    const std::uint64_t id = ++lastId_;
    monitors_->emplace(id, std::make_shared<Monitor>(Monitor{kind, local, std::move(observer)}));
    return Handle([weak = std::weak_ptr(monitors_), id] {
        if (const auto monitors = weak.lock()) {
            monitors->erase(id);
        }
    });
}

bool FakeKeyEvents::keyDown(int code) { return send({KeyEventKind::keyDown, code, flags(), clock_.now()}); }

bool FakeKeyEvents::send(const KeyEvent& event) {
    std::vector<std::uint64_t> ids;
    for (const auto& [id, monitor] : *monitors_) {
        ids.push_back(id);
    }
    bool kept = false;
    for (const std::uint64_t id : ids) {
        const auto found = monitors_->find(id);
        if (found == monitors_->end()) {
            continue; // ended by an observer before it
        }
        const auto monitor = found->second;
        if (monitor->kind == event.kind && monitor->local == programHasFocus) {
            kept = monitor->observer(event) || kept;
        }
    }
    return kept;
}

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
