// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/helper/InputContext.h"

#include <input-method-unstable-v1-client-protocol.h>

#include <cstdio>
#include <cstring>
#include <wayland-client.h>

namespace lorvane::helper {

namespace {

// Of the text input protocol whose numbers these are.
constexpr std::uint32_t hintHiddenText = 0x40;
constexpr std::uint32_t purposePassword = 8;

} // namespace

struct InputContext::Listeners {
    static InputContext* of(void* data) { return static_cast<InputContext*>(data); }

    static void contentType(void* data, zwp_input_method_context_v1* context, std::uint32_t hint,
                            std::uint32_t purpose) {
        InputContext* const self = of(data);
        const bool isSecret = (hint & hintHiddenText) != 0 || purpose == purposePassword;
        if (context == self->context_ && isSecret != self->state_.isSecret) {
            self->state_.isSecret = isSecret;
            self->changed_();
        }
    }
    static void commitState(void* data, zwp_input_method_context_v1* context, std::uint32_t serial) {
        InputContext* const self = of(data);
        if (context == self->context_) {
            self->serial_ = serial;
        }
    }

    static constexpr zwp_input_method_context_v1_listener contextListener{
        [](void*, zwp_input_method_context_v1*, const char*, std::uint32_t, std::uint32_t) {},
        [](void*, zwp_input_method_context_v1*) {},
        contentType,
        [](void*, zwp_input_method_context_v1*, std::uint32_t, std::uint32_t) {},
        commitState,
        [](void*, zwp_input_method_context_v1*, const char*) {}};

    static constexpr zwp_input_method_v1_listener method{
        [](void* data, zwp_input_method_v1*, zwp_input_method_context_v1* context) {
            of(data)->activate(context);
        },
        [](void* data, zwp_input_method_v1*, zwp_input_method_context_v1* context) {
            of(data)->deactivate(context);
        }};

    static constexpr wl_registry_listener registry{
        [](void* data, wl_registry* registry, std::uint32_t name, const char* interface, std::uint32_t) {
            InputContext* const self = of(data);
            if (self->method_ == nullptr && std::strcmp(interface, zwp_input_method_v1_interface.name) == 0) {
                self->method_ = static_cast<zwp_input_method_v1*>(
                    wl_registry_bind(registry, name, &zwp_input_method_v1_interface, 1));
                zwp_input_method_v1_add_listener(self->method_, &method, self);
            }
        },
        [](void*, wl_registry*, std::uint32_t) {}};
};

InputContext::~InputContext() {
    if (display_ == nullptr) {
        return;
    }
    drop();
    if (method_ != nullptr) {
        zwp_input_method_v1_destroy(method_);
    }
    if (registry_ != nullptr) {
        wl_registry_destroy(registry_);
    }
    wl_display_disconnect(display_);
}

bool InputContext::open() {
    display_ = wl_display_connect(nullptr);
    if (display_ == nullptr) {
        std::fputs("lorvane-input-method: there is no Wayland compositor\n", stderr);
        return false;
    }
    registry_ = wl_display_get_registry(display_);
    wl_registry_add_listener(registry_, &Listeners::registry, this);
    if (wl_display_roundtrip(display_) < 0 || method_ == nullptr) {
        std::fputs(
            "lorvane-input-method: the compositor takes it for no input method; KWin starts it when it "
            "is chosen as the virtual keyboard\n",
            stderr);
        return false;
    }
    return true;
}

void InputContext::activate(zwp_input_method_context_v1* context) {
    drop();
    context_ = context;
    serial_ = 0;
    lastContext_ = lastContext_ + 1 == 0 ? 1 : lastContext_ + 1;
    state_ = {lastContext_, false};
    zwp_input_method_context_v1_add_listener(context_, &Listeners::contextListener, this);
    changed_();
}

void InputContext::deactivate(zwp_input_method_context_v1* context) {
    if (context != nullptr && context == context_) {
        drop();
        changed_();
    }
}

void InputContext::drop() {
    if (context_ != nullptr) {
        zwp_input_method_context_v1_destroy(context_);
        context_ = nullptr;
    }
    state_ = {};
}

bool InputContext::commit(const Commit& commit) {
    const bool isTaken = context_ != nullptr && commit.context == state_.context && !state_.isSecret &&
                         isCommittable(commit.text);
    if (isTaken) {
        zwp_input_method_context_v1_commit_string(context_, serial_, commit.text.c_str());
        wl_display_flush(display_);
    }
    return isTaken;
}

} // namespace lorvane::helper
