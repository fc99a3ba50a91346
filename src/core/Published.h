// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"

#include <utility>

namespace lorvane {

/// A value that tells its observers of every change. Main thread.
template <typename T>
class Published {
 public:
    Published() = default;
    explicit Published(T initial) : value_(std::move(initial)) {}

    [[nodiscard]] const T& get() const { return value_; }
    /// Observers are told after the change, and only of a change.
    void set(T value) {
        if (value_ == value) {
            return;
        }
        value_ = std::move(value);
        // An observer may set it anew, so each is told a value that stays as it is.
        const T told = value_;
        changed_.emit(told);
    }
    [[nodiscard]] Handle subscribe(std::function<void(const T&)> observer) {
        return changed_.subscribe(std::move(observer));
    }

 private:
    T value_{};
    Signal<T> changed_;
};

} // namespace lorvane
