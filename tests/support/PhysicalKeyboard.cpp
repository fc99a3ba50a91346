// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/PhysicalKeyboard.h"

#include "support/SessionHands.h"
#include "support/Wait.h"

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

// A keyboard that stays what it is whoever asks.
struct PhysicalKeyboard::Connection {
    virtual ~Connection() = default;
    virtual void post(int keyCode, bool down) const = 0;
    virtual void releaseAfter(int keyCode, std::chrono::milliseconds time) const = 0;
    virtual bool isDown(int keyCode) const = 0;
};

namespace {

class OfDisplay : public PhysicalKeyboard::Connection {
 public:
    OfDisplay() : display_(XOpenDisplay(nullptr)) {
        if (!display_)
            throw std::runtime_error("no X display answers");
        const int id = ordinaryKeyboard(display_);
        device_ = id == none ? nullptr : XOpenDevice(display_, static_cast<XID>(id));
        if (!device_) {
            XCloseDisplay(display_);
            throw std::runtime_error("the X display has no ordinary keyboard");
        }
    }
    ~OfDisplay() override {
        XCloseDevice(display_, device_);
        XCloseDisplay(display_);
    }
    OfDisplay(const OfDisplay&) = delete;
    OfDisplay& operator=(const OfDisplay&) = delete;

    void post(int keyCode, bool down) const override { send(keyCode, down, 0); }
    void releaseAfter(int keyCode, std::chrono::milliseconds time) const override {
        send(keyCode, false, static_cast<unsigned long>(time.count()));
    }
    bool isDown(int keyCode) const override {
        std::array<char, 32> keys{};
        XQueryKeymap(display_, keys.data());
        const auto code = static_cast<unsigned>(keyCode);
        return (static_cast<unsigned char>(keys[code / 8]) >> (code % 8) & 1U) != 0;
    }

 private:
    void send(int keyCode, bool down, unsigned long delay) const {
        XTestFakeDeviceKeyEvent(display_, device_, static_cast<unsigned>(keyCode), down ? True : False,
                                nullptr, 0, delay);
        XSync(display_, False);
    }

    Display* display_;
    XDevice* device_ = nullptr;
};

class OfSession : public PhysicalKeyboard::Connection {
 public:
    void post(int keyCode, bool down) const override {
        hands::ask({down ? QStringLiteral("press") : QStringLiteral("release"), keyCode});
    }
    void releaseAfter(int keyCode, std::chrono::milliseconds time) const override {
        hands::ask({QStringLiteral("release"), keyCode, static_cast<int>(time.count())});
    }
    bool isDown(int keyCode) const override {
        return hands::ask({QStringLiteral("down")}).toArray().contains(keyCode);
    }
};

} // namespace

PhysicalKeyboard::PhysicalKeyboard() {
    if (hands::areThere())
        connection_ = std::make_unique<OfSession>();
    else
        connection_ = std::make_unique<OfDisplay>();
}

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

void PhysicalKeyboard::command(const std::vector<int>& keyCodes) {
    const auto wait = [] { (void)waitUntil([] { return false; }, std::chrono::milliseconds(40)); };
    for (std::size_t i = 0; i < keyCodes.size(); ++i) {
        if (i + 1 == keyCodes.size())
            wait();
        press(keyCodes[i]);
    }
    wait();
    for (auto key = keyCodes.rbegin(); key != keyCodes.rend(); ++key)
        release(*key);
}

void PhysicalKeyboard::hold(int keyCode, std::chrono::milliseconds time) {
    press(keyCode);
    connection_->releaseAfter(keyCode, time);
    std::erase(held_, keyCode);
}

bool PhysicalKeyboard::isDown(int keyCode) const { return connection_->isDown(keyCode); }

} // namespace lorvane
