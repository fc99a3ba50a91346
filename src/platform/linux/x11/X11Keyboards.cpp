// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11Keyboards.h"

#include <string_view>

#include <xcb/xinput.h>

namespace lorvane {

namespace {

constexpr std::string_view syntheticSuffix = "XTEST keyboard";

std::string_view nameOf(const xcb_input_xi_device_info_t* device) {
    return {xcb_input_xi_device_info_name(device),
            static_cast<std::size_t>(xcb_input_xi_device_info_name_length(device))};
}

X11Keyboards::Keys keysOf(const xcb_input_key_state_t* state) {
    X11Keyboards::Keys keys;
    for (std::size_t code = 0; code < keys.size(); ++code) {
        keys[code] = (state->keys[code / 8] >> (code % 8) & 1U) != 0;
    }
    return keys;
}

/// Nothing when there is no answer, or the device has no keys.
std::optional<X11Keyboards::Keys> keysOf(const xcb_input_query_device_state_reply_t* answer) {
    if (answer == nullptr) {
        return std::nullopt;
    }
    for (auto it = xcb_input_query_device_state_classes_iterator(answer); it.rem > 0;
         xcb_input_input_state_next(&it)) {
        if (it.data->class_id == XCB_INPUT_INPUT_CLASS_KEY) {
            return keysOf(reinterpret_cast<const xcb_input_key_state_t*>(it.data));
        }
    }
    return std::nullopt;
}

} // namespace

void X11Keyboards::refresh() {
    const auto devices = connection_.reply(
        xcb_input_xi_query_device_reply, xcb_input_xi_query_device(connection_.xcb(), XCB_INPUT_DEVICE_ALL));
    if (!devices) {
        return;
    }
    ofUser_.clear();
    synthetic_.clear();
    for (auto it = xcb_input_xi_query_device_infos_iterator(devices.get()); it.rem > 0;
         xcb_input_xi_device_info_next(&it)) {
        if (it.data->type != XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD) {
            continue;
        }
        const bool isSynthetic = nameOf(it.data).ends_with(syntheticSuffix);
        (isSynthetic ? synthetic_ : ofUser_).insert(it.data->deviceid);
    }
}

bool X11Keyboards::isSynthetic(XDeviceId device) {
    if (!ofUser_.contains(device) && !synthetic_.contains(device)) {
        refresh();
    }
    return synthetic_.contains(device);
}

std::optional<XDeviceId> X11Keyboards::synthetic() const {
    return synthetic_.empty() ? std::nullopt : std::optional(*synthetic_.begin());
}

std::vector<X11Keyboards::Keys> X11Keyboards::keysDownOfUser() const {
    std::vector<xcb_input_query_device_state_cookie_t> questions;
    for (const XDeviceId device : ofUser_) {
        questions.push_back(
            xcb_input_query_device_state(connection_.xcb(), static_cast<std::uint8_t>(device)));
    }
    std::vector<Keys> all;
    for (const auto& question : questions) {
        const auto state = connection_.reply(xcb_input_query_device_state_reply, question);
        if (const auto keys = keysOf(state.get())) {
            all.push_back(*keys);
        }
    }
    return all;
}

std::optional<X11Keyboards::Keys> X11Keyboards::keysDown(XDeviceId device) const {
    const auto state =
        connection_.reply(xcb_input_query_device_state_reply,
                          xcb_input_query_device_state(connection_.xcb(), static_cast<std::uint8_t>(device)));
    return keysOf(state.get());
}

} // namespace lorvane
