// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/PulseStream.h"

namespace lorvane {

namespace {

void endNow(pa_stream* stream) {
    pa_stream_set_state_callback(stream, nullptr, nullptr);
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
}

void endWhenMade(pa_stream* stream, void*) {
    if (pa_stream_get_state(stream) != PA_STREAM_CREATING) {
        endNow(stream);
    }
}

} // namespace

void endStream(pa_stream* stream) {
    pa_stream_set_read_callback(stream, nullptr, nullptr);
    pa_stream_set_moved_callback(stream, nullptr, nullptr);
    if (pa_stream_get_state(stream) == PA_STREAM_CREATING) {
        pa_stream_set_state_callback(stream, endWhenMade, nullptr);
    } else {
        endNow(stream);
    }
}

} // namespace lorvane
