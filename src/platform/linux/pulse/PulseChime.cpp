// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/PulseChime.h"

#include "platform/linux/pulse/ChimeSound.h"
#include "platform/linux/pulse/PulseStream.h"

#include <pulse/proplist.h>

namespace lorvane {

namespace {

pa_stream* makeStream(pa_context* context) {
    const pa_sample_spec format{PA_SAMPLE_S16NE, chimeRate, 1};
    pa_proplist* const properties = pa_proplist_new();
    pa_proplist_sets(properties, PA_PROP_MEDIA_ROLE, "event");
    pa_stream* const stream = pa_stream_new_with_proplist(context, "Chime", &format, nullptr, properties);
    pa_proplist_free(properties);
    return stream;
}

PulseChime* self(void* chime) { return static_cast<PulseChime*>(chime); }

} // namespace

PulseChime::PulseChime(PulseConnection& connection) : connection_(connection), sound_(chimeSound()) {}

PulseChime::~PulseChime() {
    const PulseConnection::Lock lock(connection_);
    while (!playing_.empty()) {
        end(*playing_.begin());
    }
}

void PulseChime::play() {
    const PulseConnection::Lock lock(connection_);
    auto* const context = connection_.readyContext();
    pa_stream* const stream = context != nullptr ? makeStream(context) : nullptr;
    if (stream == nullptr) {
        return;
    }
    playing_.insert(stream);
    pa_stream_set_state_callback(
        stream, [](pa_stream* which, void* chime) { self(chime)->streamChanged(which); }, this);
    if (pa_stream_connect_playback(stream, nullptr, nullptr, PA_STREAM_NOFLAGS, nullptr, nullptr) < 0) {
        end(stream);
    }
}

void PulseChime::streamChanged(pa_stream* stream) {
    switch (pa_stream_get_state(stream)) {
    case PA_STREAM_READY:
        write(stream);
        break;
    case PA_STREAM_FAILED:
    case PA_STREAM_TERMINATED:
        end(stream);
        break;
    default:
        break;
    }
}

void PulseChime::write(pa_stream* stream) {
    const std::size_t bytes = sound_.size() * sizeof(std::int16_t);
    if (pa_stream_write(stream, sound_.data(), bytes, nullptr, 0, PA_SEEK_RELATIVE) < 0) {
        end(stream);
        return;
    }
    auto* const drained = pa_stream_drain(
        stream, [](pa_stream* which, int, void* chime) { self(chime)->end(which); }, this);
    if (drained == nullptr) {
        end(stream);
        return;
    }
    pa_operation_unref(drained);
}

void PulseChime::end(pa_stream* stream) {
    if (playing_.erase(stream) == 0) {
        return;
    }
    endStream(stream);
}

} // namespace lorvane
