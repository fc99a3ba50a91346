// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

namespace lorvane::backend {

// A number of bytes that several threads share.
class ByteBudget {
 public:
    explicit ByteBudget(std::size_t bytes) : left_(bytes) {}

    // Bytes taken from a budget, given back with their owner.
    class Share {
     public:
        explicit Share(std::shared_ptr<ByteBudget> budget) : budget_(std::move(budget)) {}
        Share(Share&& other) noexcept
            : budget_(std::move(other.budget_)), taken_(std::exchange(other.taken_, 0)) {}
        Share& operator=(Share&& other) noexcept {
            release();
            budget_ = std::move(other.budget_);
            taken_ = std::exchange(other.taken_, 0);
            return *this;
        }
        ~Share() { release(); }

        // False, and nothing taken, when the budget has no more.
        [[nodiscard]] bool grow(std::size_t bytes) {
            auto left = budget_->left_.load();
            do {
                if (left < bytes)
                    return false;
            } while (!budget_->left_.compare_exchange_weak(left, left - bytes));
            taken_ += bytes;
            return true;
        }
        void release() {
            if (budget_)
                budget_->left_ += std::exchange(taken_, 0);
        }

     private:
        std::shared_ptr<ByteBudget> budget_;
        std::size_t taken_ = 0;
    };

    std::size_t left() const { return left_; }

 private:
    std::atomic<std::size_t> left_;
};

} // namespace lorvane::backend
