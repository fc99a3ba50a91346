// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/FakeInput.h"

#include <fake-input-client-protocol.h>

#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

// Keys came with 4; what came later is of no use here.
constexpr std::uint32_t versionWithKeys = 4;
/// From a key's request until nobody is told of it any more.
constexpr Duration onTheirWay = std::chrono::milliseconds(150);

} // namespace

FakeInput::FakeInput(WaylandConnection& connection, Clock& clock) : connection_(connection), clock_(clock) {
    came_ = connection.onGlobal(org_kde_kwin_fake_input_interface.name,
                                [this](const WaylandGlobal& global) { bind(global); });
    gone_ = connection.onGlobalGone([this](const WaylandGlobal& global) {
        if (input_ != nullptr && global.name == global_) {
            release();
        }
    });
}

FakeInput::~FakeInput() { release(); }

void FakeInput::bind(const WaylandGlobal& global) {
    if (input_ != nullptr || global.version < versionWithKeys) {
        return;
    }
    global_ = global.name;
    input_ = connection_.bindGlobal<org_kde_kwin_fake_input>(global, org_kde_kwin_fake_input_interface,
                                                             versionWithKeys);
    if (input_ != nullptr) {
        org_kde_kwin_fake_input_authenticate(input_, "Lorvane", "Pastes what you have dictated");
    }
}

void FakeInput::release() {
    if (input_ != nullptr) {
        org_kde_kwin_fake_input_destroy(input_);
        input_ = nullptr;
    }
}

void FakeInput::key(std::uint32_t inputCode, bool isDown) {
    if (isThere()) {
        lastPosted_ = clock_.now();
        org_kde_kwin_fake_input_keyboard_key(input_, inputCode, isDown ? 1 : 0);
    }
}

void FakeInput::liftModifiers() {
    for (const std::uint32_t modifier :
         {KEY_LEFTCTRL, KEY_RIGHTCTRL, KEY_LEFTSHIFT, KEY_RIGHTSHIFT, KEY_LEFTALT, KEY_RIGHTALT}) {
        key(modifier, false);
    }
}

bool FakeInput::isPosting() const { return lastPosted_ && clock_.now() - *lastPosted_ < onTheirWay; }

} // namespace lorvane
