// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <utility>

namespace lorvane {

/// The life of a subscription, a timer or a watch: it ends when this does. Main thread.
class [[nodiscard]] Handle {
 public:
    Handle() = default;
    explicit Handle(std::function<void()> end) : end_(std::move(end)) {}
    Handle(Handle&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        if (this != &other) {
            reset();
            end_ = std::exchange(other.end_, nullptr);
        }
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { reset(); }

    void reset() {
        if (auto end = std::exchange(end_, nullptr)) {
            end();
        }
    }
    explicit operator bool() const { return static_cast<bool>(end_); }

 private:
    std::function<void()> end_;
};

} // namespace lorvane
