// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/KeyMonitorList.h"

#include <algorithm>
#include <vector>

namespace lorvane {

KeyMonitorList::KeyMonitorList(std::function<void()> changed) {
    shared_->changed = changed ? std::move(changed) : [] {};
}

Handle KeyMonitorList::addGlobal(KeyEventKind kind, std::function<void(const KeyEvent&)> observer) {
    return add({kind, false, [observer = std::move(observer)](const KeyEvent& event) {
                    observer(event);
                    return false;
                }});
}

Handle KeyMonitorList::addLocal(KeyEventKind kind, std::function<bool(const KeyEvent&)> observer) {
    return add({kind, true, std::move(observer)});
}

Handle KeyMonitorList::add(Monitor monitor) {
    const std::uint64_t id = ++lastId_;
    shared_->monitors.emplace(id, std::make_shared<Monitor>(std::move(monitor)));
    shared_->changed();
    return Handle([weak = std::weak_ptr(shared_), id] {
        if (const auto shared = weak.lock()) {
            shared->monitors.erase(id);
            shared->changed();
        }
    });
}

bool KeyMonitorList::deliver(const KeyEvent& event, bool local) const {
    const auto shared = shared_;
    std::vector<std::uint64_t> ids;
    for (const auto& [id, monitor] : shared->monitors) {
        if (monitor->kind == event.kind && monitor->local == local) {
            ids.push_back(id);
        }
    }
    bool kept = false;
    for (const std::uint64_t id : ids) {
        const auto found = shared->monitors.find(id);
        if (found == shared->monitors.end()) {
            continue; // ended by one before it
        }
        const auto monitor = found->second;
        kept = monitor->observer(event) || kept;
    }
    return kept;
}

bool KeyMonitorList::hasLocal(KeyEventKind kind) const {
    return std::any_of(shared_->monitors.begin(), shared_->monitors.end(), [kind](const auto& entry) {
        return entry.second->local && entry.second->kind == kind;
    });
}

} // namespace lorvane
