// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Presence.h"
#include "platform/linux/pulse/PulseConnection.h"

#include <cstdint>
#include <pulse/stream.h>
#include <set>
#include <vector>

namespace lorvane {

/// The chime through the sound server's default output. Main thread; returns at once, and makes no sound when
/// there is no server.
class PulseChime final : public Chime {
 public:
    explicit PulseChime(PulseConnection& connection);
    ~PulseChime() override;
    PulseChime(const PulseChime&) = delete;
    PulseChime& operator=(const PulseChime&) = delete;

    void play() override;

 private:
    void streamChanged(pa_stream* stream);
    void write(pa_stream* stream);
    void end(pa_stream* stream);

    PulseConnection& connection_;
    const std::vector<std::int16_t> sound_;
    // Guarded by the connection's lock.
    std::set<pa_stream*> playing_;
};

} // namespace lorvane
