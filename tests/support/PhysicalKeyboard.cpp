// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/PhysicalKeyboard.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

#include <X11/Xlib.h>
#include <X11/extensions/XInput.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XTest.h>

namespace lorvane {

namespace {

constexpr int none = -1;

// The keyboard of the user, and not the one of the XTEST extension.
int ordinaryKeyboard(Display* display) {
    int count = 0;
    XIDeviceInfo* devices = XIQueryDevice(display, XIAllDevices, &count);
    int found = none;
    for (int i = 0; i < count && found == none; ++i) {
        const std::string_view name = devices[i].name;
        if (devices[i].use == XISlaveKeyboard && !name.ends_with("XTEST keyboard"))
            found = devices[i].deviceid;
    }
    XIFreeDeviceInfo(devices);
    return found;
}

} // namespace

struct PhysicalKeyboard::Connection {
    Connection() : display(XOpenDisplay(nullptr)) {
        if (!display)
            throw std::runtime_error("no X display answers");
        const int id = ordinaryKeyboard(display);
        device = id == none ? nullptr : XOpenDevice(display, static_cast<XID>(id));
        if (!device) {
            XCloseDisplay(display);
            throw std::runtime_error("the X display has no ordinary keyboard");
        }
    }
    ~Connection() {
        XCloseDevice(display, device);
        XCloseDisplay(display);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void post(int keyCode, bool down, unsigned long delay = 0) const {
        XTestFakeDeviceKeyEvent(display, device, static_cast<unsigned>(keyCode), down ? True : False, nullptr,
                                0, delay);
        XSync(display, False);
    }

    Display* display;
    XDevice* device = nullptr;
};

PhysicalKeyboard::PhysicalKeyboard() : connection_(std::make_unique<Connection>()) {}

PhysicalKeyboard::~PhysicalKeyboard() {
    while (!held_.empty())
        release(held_.back());
}

void PhysicalKeyboard::press(int keyCode) {
    connection_->post(keyCode, true);
    held_.push_back(keyCode);
}

void PhysicalKeyboard::release(int keyCode) {
    connection_->post(keyCode, false);
    std::erase(held_, keyCode);
}

void PhysicalKeyboard::tap(int keyCode) {
    press(keyCode);
    release(keyCode);
}

void PhysicalKeyboard::chord(const std::vector<int>& keyCodes) {
    for (const int keyCode : keyCodes)
        press(keyCode);
    for (auto keyCode = keyCodes.rbegin(); keyCode != keyCodes.rend(); ++keyCode)
        release(*keyCode);
}

void PhysicalKeyboard::hold(int keyCode, std::chrono::milliseconds time) {
    press(keyCode);
    connection_->post(keyCode, false, static_cast<unsigned long>(time.count()));
    std::erase(held_, keyCode);
}

bool PhysicalKeyboard::isDown(int keyCode) const {
    std::array<char, 32> keys{};
    XQueryKeymap(connection_->display, keys.data());
    const auto code = static_cast<unsigned>(keyCode);
    return (static_cast<unsigned char>(keys[code / 8]) >> (code % 8) & 1U) != 0;
}

} // namespace lorvane
