// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/kde/helper/HelperWire.h"

#include <functional>

struct wl_display;
struct wl_registry;
struct wl_array;
struct zwp_input_method_v1;
struct zwp_input_method_context_v1;

namespace lorvane::helper {

/// The input method's end of the compositor (zwp_input_method_v1): which field may be written into, and
/// writing. No key is grabbed, so the user's own typing goes past untouched.
class InputContext {
 public:
    /// `changed`: the state is another now.
    explicit InputContext(std::function<void()> changed) : changed_(std::move(changed)) {}
    InputContext(const InputContext&) = delete;
    InputContext& operator=(const InputContext&) = delete;
    ~InputContext();

    /// False with a reason on standard error when there is no compositor that takes us for its input method.
    [[nodiscard]] bool open();
    [[nodiscard]] wl_display* display() const { return display_; }
    [[nodiscard]] ContextState state() const { return state_; }
    /// Hands the text to the compositor; false when that context is not the one in force, or is secret.
    bool commit(const Commit& commit);

 private:
    struct Listeners;
    void activate(zwp_input_method_context_v1* context);
    void deactivate(zwp_input_method_context_v1* context);
    void drop();

    std::function<void()> changed_;
    wl_display* display_ = nullptr;
    wl_registry* registry_ = nullptr;
    zwp_input_method_v1* method_ = nullptr;
    zwp_input_method_context_v1* context_ = nullptr;
    std::uint32_t serial_ = 0;
    std::uint32_t lastContext_ = 0;
    ContextState state_;
};

} // namespace lorvane::helper
