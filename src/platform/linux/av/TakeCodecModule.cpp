// SPDX-License-Identifier: GPL-3.0-or-later
// The one symbol of the module that the program loads while it has takes to write.
#include "platform/linux/av/AvTakeCodec.h"

extern "C" __attribute__((visibility("default"))) lorvane::TakeCodec* lorvaneTakeCodec() {
    static lorvane::AvTakeCodec codec;
    return &codec;
}
