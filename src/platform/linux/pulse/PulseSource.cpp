// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/PulseSource.h"

#include <QStringList>

#include <algorithm>
#include <pulse/proplist.h>

namespace lorvane {

namespace {

QString property(const pa_source_info& info, const char* key) {
    return QString::fromUtf8(pa_proplist_gets(info.proplist, key));
}

// An output of real hardware has the interface that drives it among its properties; "auto_null" is what a
// server without any hardware makes for itself.
bool monitorsACable(const pa_source_info& info) {
    return property(info, PA_PROP_DEVICE_API).isEmpty() && property(info, "alsa.card").isEmpty() &&
           QLatin1String(info.name) != QLatin1String("auto_null.monitor");
}

} // namespace

bool operator==(const PulseSource& a, const PulseSource& b) {
    return a.index == b.index && a.name == b.name && a.description == b.description &&
           pa_sample_spec_equal(&a.format, &b.format) != 0 &&
           pa_channel_map_equal(&a.channels, &b.channels) != 0 && a.isMonitor == b.isMonitor &&
           a.isCable == b.isCable && a.isBuiltIn == b.isBuiltIn;
}

// Properties as the server's device database sets them. A form factor is only known of some devices, and an
// internal one may sit on any bus; without one a sound chip on the board is told by bus or driver.
bool isBuiltIn(const PulseWhereabouts& whereabouts) {
    if (!whereabouts.formFactor.isEmpty()) {
        return whereabouts.formFactor == QLatin1String("internal");
    }
    if (!whereabouts.bus.isEmpty()) {
        return QStringList{"pci", "platform", "isa", "soundwire", "acp"}.contains(whereabouts.bus);
    }
    const QStringList onBoard{"snd_hda_", "snd_sof", "snd_soc", "snd_acp", "snd_intel"};
    return std::any_of(onBoard.begin(), onBoard.end(),
                       [&](const QString& prefix) { return whereabouts.driver.startsWith(prefix); });
}

PulseSource readSource(const pa_source_info& info) {
    PulseSource source;
    source.index = info.index;
    source.name = QString::fromUtf8(info.name);
    source.description = QString::fromUtf8(info.description);
    source.format = info.sample_spec;
    source.channels = info.channel_map;
    source.isMonitor = info.monitor_of_sink != PA_INVALID_INDEX;
    source.isCable = source.isMonitor && monitorsACable(info);
    source.isBuiltIn =
        isBuiltIn({property(info, PA_PROP_DEVICE_BUS), property(info, PA_PROP_DEVICE_FORM_FACTOR),
                   property(info, "alsa.driver_name")});
    return source;
}

const PulseSource* findSource(const PulseInputs& inputs, std::uint32_t index) {
    const auto found = std::find_if(inputs.sources.begin(), inputs.sources.end(),
                                    [&](const PulseSource& source) { return source.index == index; });
    return found == inputs.sources.end() ? nullptr : &*found;
}

const PulseSource* defaultSource(const PulseInputs& inputs) {
    const auto found =
        std::find_if(inputs.sources.begin(), inputs.sources.end(),
                     [&](const PulseSource& source) { return source.name == inputs.defaultName; });
    if (found == inputs.sources.end() || (found->isMonitor && !found->isCable)) {
        return nullptr;
    }
    return &*found;
}

} // namespace lorvane
