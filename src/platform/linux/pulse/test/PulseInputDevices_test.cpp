// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/PulseInputDevices.h"

#include "audio/MacAudioDevices.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/pulse/test/PulseServer.h"
#include "support/VirtualMicrophone.h"

#include <optional>

namespace lorvane {

namespace {

class PulseInputDevicesTest : public ::testing::Test {
 protected:
    void SetUp() override { ASSERT_TRUE(seen({"Virtual_Microphone"})) << names().join(u'|').toStdString(); }
    QStringList names() const {
        QStringList found;
        for (const MacInputDevice& device : inputs.inputs()) {
            found.append(device.name);
        }
        return found;
    }
    bool seen(const QStringList& expected) const {
        return waitUntil([&] { return names() == expected; });
    }
    QtClock clock;
    PulseConnection connection{clock};
    PulseInputDevices devices{connection};
    MacAudioDevices inputs{devices};
};

TEST_F(PulseInputDevicesTest, AMicrophoneIsKnownByItsNameOnTheServer) {
    EXPECT_EQ(inputs.inputs().front().uid, QStringLiteral("virtual_mic"));
    EXPECT_FALSE(inputs.inputs().front().isBuiltIn);
    EXPECT_TRUE(MacAudioDevices::deviceID(devices, QStringLiteral("virtual_mic")));
}

TEST_F(PulseInputDevicesTest, MonitorsOfOutputsAreNoInputs) {
    ASSERT_TRUE(pactl({"list", "short", "sources"}).contains(QStringLiteral("virtual_speaker.monitor")));
    EXPECT_EQ(inputs.inputs().size(), 1U);
    EXPECT_EQ(MacAudioDevices::deviceID(devices, QStringLiteral("virtual_speaker.monitor")), std::nullopt);
}

TEST_F(PulseInputDevicesTest, FollowsWhatIsPluggedInAndOut) {
    std::optional<PluggedMicrophone> headset(std::in_place, QStringLiteral("usb_headset"),
                                             QStringLiteral("A Headset"));
    EXPECT_TRUE(seen({"A Headset", "Virtual_Microphone"})) << names().join(u'|').toStdString();
    headset.reset();
    EXPECT_TRUE(seen({"Virtual_Microphone"})) << names().join(u'|').toStdString();
}

TEST_F(PulseInputDevicesTest, ABuiltInMicrophoneComesFirst) {
    const PulseModule builtIn({"module-remap-source", "source_name=board", "master=virtual_speaker.monitor",
                               R"(source_properties="device.description='Zebra' device.bus='pci'")"});
    EXPECT_TRUE(seen({"Zebra", "Virtual_Microphone"})) << names().join(u'|').toStdString();
}

TEST_F(PulseInputDevicesTest, TheListEmptiesWithTheServerAndFillsAgain) {
    sound::stopServer();
    EXPECT_TRUE(seen({})) << names().join(u'|').toStdString();
    sound::startServer();
    EXPECT_TRUE(seen({"Virtual_Microphone"})) << names().join(u'|').toStdString();
}

} // namespace

} // namespace lorvane
