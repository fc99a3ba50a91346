// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/SeatKeymap.h"

#include <QFile>

#include <unistd.h>

namespace lorvane {

const wl_keyboard_listener SeatKeymap::listener = {
    .keymap =
        [](void* self, wl_keyboard*, std::uint32_t format, int descriptor, std::uint32_t size) {
            static_cast<SeatKeymap*>(self)->takeKeymap(format, descriptor, size);
        },
    .enter = [](void*, wl_keyboard*, std::uint32_t, wl_surface*, wl_array*) {},
    .leave = [](void*, wl_keyboard*, std::uint32_t, wl_surface*) {},
    .key = [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
    .modifiers = [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                    std::uint32_t) {},
    .repeat_info = [](void*, wl_keyboard*, std::int32_t, std::int32_t) {},
};

SeatKeymap::SeatKeymap(WaylandConnection& connection, WaylandSeat& seat)
    : seat_(seat), context_(xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES)) {
    capabilitiesChanged_ = seat.onCapabilitiesChanged([this] { follow(); });
    lost_ = connection.onLost([this] { text_.clear(); });
    follow();
}

void SeatKeymap::follow() {
    text_.clear();
    keyboard_.reset();
    if (seat_.seat() != nullptr && seat_.hasKeyboard()) {
        keyboard_ = waylandOwned(wl_seat_get_keyboard(seat_.seat()), wl_keyboard_destroy);
        wl_keyboard_add_listener(keyboard_.get(), &listener, this);
    }
}

// Mapped and not read: its place is shared by all who were given the file.
void SeatKeymap::takeKeymap(std::uint32_t format, int descriptor, std::uint32_t size) {
    QFile file;
    const bool isOpen = file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    if (!isOpen) {
        close(descriptor); // it is ours whatever becomes of it
    }
    const uchar* const text = isOpen && format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1
                                  ? file.map(0, size, QFileDevice::MapPrivateOption)
                                  : nullptr;
    text_ = text != nullptr ? QByteArray(reinterpret_cast<const char*>(text), size) : QByteArray();
}

XkbKeymap SeatKeymap::read() const {
    if (text_.isEmpty() || !context_) {
        return nullptr;
    }
    return XkbKeymap(xkb_keymap_new_from_string(context_.get(), text_.constData(), XKB_KEYMAP_FORMAT_TEXT_V1,
                                                XKB_KEYMAP_COMPILE_NO_FLAGS));
}

} // namespace lorvane
