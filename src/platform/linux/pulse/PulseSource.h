// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <pulse/channelmap.h>
#include <pulse/introspect.h>
#include <pulse/sample.h>
#include <vector>

namespace lorvane {

/// A source as the server tells of it.
struct PulseSource {
    std::uint32_t index = 0;
    QString name = {};
    QString description = {};
    pa_sample_spec format = {};
    pa_channel_map channels = {};
    /// Hears what an output plays.
    bool isMonitor = false;
    /// The monitor of an output that somebody made by hand to carry sound between programs.
    bool isCable = false;
    bool isBuiltIn = false;
};
[[nodiscard]] bool operator==(const PulseSource& a, const PulseSource& b);

/// What of a source's properties says where it is plugged in.
struct PulseWhereabouts {
    QString bus;
    QString formFactor;
    QString driver;
};
[[nodiscard]] bool isBuiltIn(const PulseWhereabouts& whereabouts);

[[nodiscard]] PulseSource readSource(const pa_source_info& info);

/// Everything that is known of a server's inputs at one moment.
struct PulseInputs {
    std::vector<PulseSource> sources;
    QString defaultName;
    friend bool operator==(const PulseInputs&, const PulseInputs&) = default;
};
[[nodiscard]] const PulseSource* findSource(const PulseInputs& inputs, std::uint32_t index);
/// Null when there is none, or when it only hears what the loudspeakers play: a server without a microphone
/// names such a one for want of better.
[[nodiscard]] const PulseSource* defaultSource(const PulseInputs& inputs);

} // namespace lorvane
