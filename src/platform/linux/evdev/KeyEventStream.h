// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "platform/linux/evdev/EvdevKeyTable.h"

#include <QByteArray>

#include <vector>

struct input_event;

namespace lorvane {

/// The bytes of a key device made into keys. What is no key event of the kernel's kind is passed over,
/// repeats too; half an event waits for its rest. Rules of the kernel's Documentation/input/event-codes.rst:
/// after SYN_DROPPED nothing counts up to the next SYN_REPORT, and then the state has to be asked for.
class KeyEventStream {
 public:
    struct Item {
        enum class Kind {
            down,
            up,
            dropped ///< events were lost: ask for the state
        };
        Kind kind = Kind::down;
        EvdevCode key = 0;
        /// As the event has it, on the clock of the device.
        Instant time;

        friend bool operator==(const Item&, const Item&) = default;
    };

    [[nodiscard]] std::vector<Item> take(const QByteArray& bytes);

 private:
    void takeEvent(const input_event& event, std::vector<Item>& items);

    QByteArray rest_;
    bool dropping_ = false;
};

} // namespace lorvane
