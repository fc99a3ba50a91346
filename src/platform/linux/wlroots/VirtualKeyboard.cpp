// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/VirtualKeyboard.h"

#include <sys/mman.h>
#include <unistd.h>

namespace lorvane {

namespace {

/// A file in memory, as the receiver maps it; -1 when there is none to be had.
int fileOf(const QByteArray& content) {
    const int file = memfd_create("lorvane-keymap", MFD_CLOEXEC);
    if (file >= 0 &&
        write(file, content.constData(), static_cast<std::size_t>(content.size())) != content.size()) {
        close(file);
        return -1;
    }
    return file;
}

} // namespace

VirtualKeyboard::VirtualKeyboard(WaylandConnection& connection, WaylandSeat& seat, Clock& clock)
    : connection_(connection), seat_(seat), clock_(clock) {
    seatChanged_ = seat.onChanged([this] {
        keyboard_.reset();
        keymap_.clear();
    });
}

bool VirtualKeyboard::isOffered() const {
    return connection_.isAlive() && seat_.seat() != nullptr &&
           connection_.offers(zwp_virtual_keyboard_manager_v1_interface.name);
}

bool VirtualKeyboard::make() {
    if (!isOffered()) {
        return false;
    }
    if (!manager_) {
        manager_ = waylandOwned(
            connection_.bind<zwp_virtual_keyboard_manager_v1>(zwp_virtual_keyboard_manager_v1_interface, 1),
            zwp_virtual_keyboard_manager_v1_destroy);
    }
    if (manager_ && !keyboard_) {
        keyboard_ = waylandOwned(
            zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager_.get(), seat_.seat()),
            zwp_virtual_keyboard_v1_destroy);
        keymap_.clear();
    }
    return keyboard_ != nullptr;
}

bool VirtualKeyboard::useKeymap(const QByteArray& keymap) {
    if (keymap.isEmpty() || !make()) {
        return false;
    }
    if (keymap == keymap_) {
        return true;
    }
    const QByteArray content = keymap + '\0';
    const int file = fileOf(content);
    if (file < 0) {
        return false;
    }
    zwp_virtual_keyboard_v1_keymap(keyboard_.get(), WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file,
                                   static_cast<std::uint32_t>(content.size()));
    close(file);
    keymap_ = keymap;
    return true;
}

void VirtualKeyboard::tap(std::uint32_t key) {
    move(key, true);
    move(key, false);
}

void VirtualKeyboard::move(std::uint32_t key, bool isDown) {
    if (!keyboard_ || keymap_.isEmpty()) {
        return;
    }
    const auto now = std::chrono::floor<std::chrono::milliseconds>(clock_.now().time_since_epoch());
    zwp_virtual_keyboard_v1_key(keyboard_.get(), static_cast<std::uint32_t>(now.count()), key,
                                isDown ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
}

void VirtualKeyboard::holdModifiers(std::uint32_t mask) {
    if (keyboard_ && !keymap_.isEmpty()) {
        zwp_virtual_keyboard_v1_modifiers(keyboard_.get(), mask, 0, 0, 0);
    }
}

} // namespace lorvane
