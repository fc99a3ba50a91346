// SPDX-License-Identifier: GPL-3.0-or-later
// The one symbol of the module that the program loads while it has takes to write.
#include "platform/linux/av/AvTakeCodec.h"

#include <array>
#include <cstddef>
#include <new>

// Never destroyed: where a library ends the process, the take is written after the module's own objects have
// gone.
extern "C" __attribute__((visibility("default"))) lorvane::TakeCodec* lorvaneTakeCodec() {
    alignas(lorvane::AvTakeCodec) static std::array<std::byte, sizeof(lorvane::AvTakeCodec)> place;
    static auto* const codec = new (place.data()) lorvane::AvTakeCodec;
    return codec;
}
