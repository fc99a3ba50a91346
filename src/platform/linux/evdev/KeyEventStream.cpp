// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/evdev/KeyEventStream.h"

#include <linux/input.h>

#include <cstring>

namespace lorvane {

namespace {

Instant timeOf(const input_event& event) {
    return Instant(std::chrono::seconds(event.input_event_sec) +
                   std::chrono::microseconds(event.input_event_usec));
}

} // namespace

std::vector<KeyEventStream::Item> KeyEventStream::take(const QByteArray& bytes) {
    rest_ += bytes;
    std::vector<Item> items;
    qsizetype at = 0;
    for (; at + qsizetype{sizeof(input_event)} <= rest_.size(); at += sizeof(input_event)) {
        input_event event;
        std::memcpy(&event, rest_.constData() + at, sizeof event);
        takeEvent(event, items);
    }
    rest_.remove(0, at);
    return items;
}

void KeyEventStream::takeEvent(const input_event& event, std::vector<Item>& items) {
    if (event.type == EV_SYN) {
        if (event.code == SYN_DROPPED) {
            dropping_ = true;
        } else if (event.code == SYN_REPORT && dropping_) {
            dropping_ = false;
            items.push_back({Item::Kind::dropped, 0, timeOf(event)});
        }
        return;
    }
    if (dropping_ || event.type != EV_KEY || (event.value != 0 && event.value != 1)) {
        return;
    }
    items.push_back({event.value == 1 ? Item::Kind::down : Item::Kind::up, event.code, timeOf(event)});
}

} // namespace lorvane
