// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/InputMethod.h"

namespace lorvane {

namespace {

// Of the text-input protocol, version 3.
constexpr std::uint32_t hiddenText = 0x40;
constexpr std::uint32_t purposePassword = 8;
constexpr std::uint32_t purposePin = 9;

InputMethod& self(void* data) { return *static_cast<InputMethod*>(data); }

} // namespace

const zwp_input_method_v2_listener InputMethod::listener{
    [](void* data, zwp_input_method_v2*) {
        self(data).pending_ = {true, false};
    },
    [](void* data, zwp_input_method_v2*) { self(data).pending_ = {}; },
    [](void*, zwp_input_method_v2*, const char*, std::uint32_t, std::uint32_t) {},
    [](void*, zwp_input_method_v2*, std::uint32_t) {},
    [](void* data, zwp_input_method_v2*, std::uint32_t hint, std::uint32_t purpose) {
        self(data).pending_.isSecret =
            (hint & hiddenText) != 0 || purpose == purposePassword || purpose == purposePin;
    },
    [](void* data, zwp_input_method_v2*) { self(data).done(); },
    [](void* data, zwp_input_method_v2*) {
        self(data).isUnavailable_ = true;
        self(data).state_ = {};
        self(data).changed_.emit();
    }};

InputMethod::InputMethod(zwp_input_method_manager_v2& manager, wl_seat& seat)
    : object_(waylandOwned(zwp_input_method_manager_v2_get_input_method(&manager, &seat),
                           zwp_input_method_v2_destroy)) {
    zwp_input_method_v2_add_listener(object_.get(), &listener, this);
}

void InputMethod::done() {
    ++serial_;
    state_ = pending_;
    changed_.emit();
}

void InputMethod::commit(const QByteArray& text) {
    zwp_input_method_v2_commit_string(object_.get(), text.constData());
    zwp_input_method_v2_commit(object_.get(), serial_);
}

} // namespace lorvane
