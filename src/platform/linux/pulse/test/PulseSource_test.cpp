// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/PulseSource.h"

#include <gtest/gtest.h>

#include <memory>
#include <pulse/def.h>
#include <pulse/proplist.h>

namespace lorvane {

namespace {

struct Proplist {
    std::unique_ptr<pa_proplist, decltype(&pa_proplist_free)> list{pa_proplist_new(), pa_proplist_free};
    Proplist(std::initializer_list<std::pair<const char*, const char*>> entries) {
        for (const auto& [key, value] : entries) {
            pa_proplist_sets(list.get(), key, value);
        }
    }
};

PulseSource source(const char* name, const Proplist& properties, bool isMonitor = false) {
    pa_source_info info{};
    info.name = name;
    info.index = 3;
    info.description = "A source";
    info.monitor_of_sink = isMonitor ? 1 : PA_INVALID_INDEX;
    info.sample_spec = {PA_SAMPLE_S16LE, 44'100, 2};
    pa_channel_map_init_stereo(&info.channel_map);
    info.proplist = properties.list.get();
    return readSource(info);
}

TEST(IsBuiltIn, ByFormFactorWhereThereIsOne) {
    EXPECT_TRUE(isBuiltIn({"usb", "internal", ""}));
    for (const auto* other : {"headset", "webcam", "microphone", "hands-free", "portable"}) {
        EXPECT_FALSE(isBuiltIn({"pci", other, "snd_hda_intel"})) << other;
    }
}

TEST(IsBuiltIn, ElseByBus) {
    EXPECT_TRUE(isBuiltIn({"pci", "", ""}));
    EXPECT_TRUE(isBuiltIn({"platform", "", ""}));
    EXPECT_FALSE(isBuiltIn({"usb", "", "snd_hda_intel"}));
    EXPECT_FALSE(isBuiltIn({"bluetooth", "", ""}));
    EXPECT_FALSE(isBuiltIn({"firewire", "", ""}));
}

TEST(IsBuiltIn, ElseByDriver) {
    EXPECT_TRUE(isBuiltIn({"", "", "snd_hda_intel"}));
    EXPECT_TRUE(isBuiltIn({"", "", "snd_soc_sof_es8336"}));
    EXPECT_FALSE(isBuiltIn({"", "", "snd_usb_audio"}));
    EXPECT_FALSE(isBuiltIn({"", "", ""}));
}

TEST(ReadSource, TakesWhatTheServerTells) {
    const auto read = source("alsa_input.pci", {{PA_PROP_DEVICE_BUS, "pci"}});
    EXPECT_EQ(read.index, 3U);
    EXPECT_EQ(read.name, QStringLiteral("alsa_input.pci"));
    EXPECT_EQ(read.description, QStringLiteral("A source"));
    EXPECT_EQ(read.format.rate, 44'100U);
    EXPECT_EQ(read.format.channels, 2);
    EXPECT_TRUE(read.isBuiltIn);
    EXPECT_FALSE(read.isMonitor);
}

TEST(DefaultSource, IsTheOneTheServerNames) {
    const PulseInputs inputs{{source("one", {}), source("two", {})}, QStringLiteral("two")};
    ASSERT_NE(defaultSource(inputs), nullptr);
    EXPECT_EQ(defaultSource(inputs)->name, QStringLiteral("two"));
    EXPECT_EQ(defaultSource({inputs.sources, QStringLiteral("three")}), nullptr);
    EXPECT_EQ(defaultSource({}), nullptr);
}

TEST(DefaultSource, WhatTheLoudspeakersPlayIsNoMicrophone) {
    const auto speakers = source("alsa_output.pci.monitor", {{PA_PROP_DEVICE_API, "alsa"}}, true);
    const auto nothing = source("auto_null.monitor", {}, true);
    EXPECT_EQ(defaultSource({{speakers}, speakers.name}), nullptr);
    EXPECT_EQ(defaultSource({{nothing}, nothing.name}), nullptr);
}

TEST(DefaultSource, AnOutputMadeByHandToCarrySoundIsOne) {
    const auto cable = source("cable.monitor", {}, true);
    EXPECT_NE(defaultSource({{cable}, cable.name}), nullptr);
}

TEST(FindSource, FindsByNumberOnly) {
    const PulseInputs inputs{{source("one", {})}, {}};
    EXPECT_NE(findSource(inputs, 3), nullptr);
    EXPECT_EQ(findSource(inputs, 4), nullptr);
}

} // namespace

} // namespace lorvane
