// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/KeyEvents.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

namespace lorvane {

/// The monitors of one source of key events, told in the order in which they were added. A monitor may add
/// and end any monitor while it is told. Main thread.
class KeyMonitorList {
 public:
    /// `changed` is called when a monitor was added or ended.
    explicit KeyMonitorList(std::function<void()> changed = {});

    [[nodiscard]] Handle addGlobal(KeyEventKind kind, std::function<void(const KeyEvent&)> observer);
    [[nodiscard]] Handle addLocal(KeyEventKind kind, std::function<bool(const KeyEvent&)> observer);

    /// Tells the monitors of the event's kind, the local ones or the global ones. True when a local one keeps
    /// the event.
    bool deliver(const KeyEvent& event, bool local) const;
    [[nodiscard]] bool hasLocal(KeyEventKind kind) const;
    [[nodiscard]] std::size_t size() const { return shared_->monitors.size(); }

 private:
    struct Monitor {
        KeyEventKind kind;
        bool local;
        std::function<bool(const KeyEvent&)> observer;
    };
    struct Shared {
        std::map<std::uint64_t, std::shared_ptr<Monitor>> monitors;
        std::function<void()> changed;
    };
    Handle add(Monitor monitor);

    std::uint64_t lastId_ = 0;
    std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};

} // namespace lorvane
