// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/MacAudioDevices.h"
#include "audio/testing/FakeInputDevices.h"

#include <QHash>
#include <QStringList>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

AudioDevice microphone(AudioDeviceID id, const QString& name, bool isBuiltIn = false) {
    return {id, 1, QStringLiteral("uid of ") + name, name, isBuiltIn};
}

QStringList names(const MacAudioDevices& devices) {
    QStringList found;
    for (const MacInputDevice& device : devices.inputs()) {
        found.append(device.name);
    }
    return found;
}

TEST(MacAudioDevices, ListsWhatIsThereWhenItIsMade) {
    FakeInputDevices system;
    system.set({microphone(7, "Webcam", true)});
    const MacAudioDevices devices(system);
    const MacInputDevice expected{QStringLiteral("uid of Webcam"), QStringLiteral("Webcam"), true};
    ASSERT_EQ(devices.inputs().size(), 1U);
    EXPECT_EQ(devices.inputs().front(), expected);
}

TEST(MacAudioDevices, LeavesOutDevicesWithOutputsOnly) {
    FakeInputDevices system;
    auto speaker = microphone(1, "Speaker");
    speaker.inputChannels = 0;
    system.set({speaker, microphone(2, "Headset")});
    EXPECT_EQ(names(MacAudioDevices(system)), QStringList{"Headset"});
}

TEST(MacAudioDevices, LeavesOutDevicesThatDoNotTellWhoTheyAre) {
    FakeInputDevices system;
    auto noUid = microphone(1, "No uid");
    noUid.uid.clear();
    auto noName = microphone(2, "No name");
    noName.name.clear();
    system.set({noUid, noName, microphone(3, "Headset")});
    EXPECT_EQ(names(MacAudioDevices(system)), QStringList{"Headset"});
}

TEST(MacAudioDevices, PutsTheBuiltInOneFirstWhateverItsName) {
    FakeInputDevices system;
    system.set({microphone(1, "Airy headset"), microphone(2, "Internal microphone", true)});
    EXPECT_EQ(names(MacAudioDevices(system)), (QStringList{"Internal microphone", "Airy headset"}));
}

TEST(MacAudioDevices, SortsByNameWhateverTheCaseOfLetters) {
    FakeInputDevices system;
    system.set({microphone(1, "beta"), microphone(2, "Gamma"), microphone(3, "ALPHA"),
                microphone(4, "zeta", true), microphone(5, "Eta", true)});
    EXPECT_EQ(names(MacAudioDevices(system)), (QStringList{"Eta", "zeta", "ALPHA", "beta", "Gamma"}));
}

TEST(MacAudioDevices, KeepsTheSystemsOrderAmongEqualNames) {
    FakeInputDevices system;
    auto second = microphone(2, "twin");
    second.uid = QStringLiteral("other uid");
    system.set({microphone(1, "Twin"), second});
    EXPECT_EQ(names(MacAudioDevices(system)), (QStringList{"Twin", "twin"}));
}

TEST(MacAudioDevices, FollowsThePluggingAndTellsOfIt) {
    FakeInputDevices system;
    MacAudioDevices devices(system);
    EXPECT_TRUE(devices.inputs().empty());
    std::vector<std::size_t> told;
    const Handle observer =
        devices.subscribeInputs([&](const auto& inputs) { told.push_back(inputs.size()); });
    system.set({microphone(1, "Headset")});
    EXPECT_EQ(names(devices), QStringList{"Headset"});
    system.set({});
    EXPECT_TRUE(devices.inputs().empty());
    EXPECT_EQ(told, (std::vector<std::size_t>{1, 0}));
}

TEST(MacAudioDevices, FindsTheDeviceOfAnIdentifier) {
    FakeInputDevices system;
    system.set({microphone(1, "Headset"), microphone(9, "Webcam")});
    EXPECT_EQ(MacAudioDevices::deviceID(system, QStringLiteral("uid of Webcam")), 9U);
    EXPECT_EQ(MacAudioDevices::deviceID(system, QStringLiteral("UID OF WEBCAM")), std::nullopt);
    EXPECT_EQ(MacAudioDevices::deviceID(system, QStringLiteral("uid of nothing")), std::nullopt);
}

TEST(MacAudioDevices, FindsNoDeviceForAnEmptyIdentifier) {
    FakeInputDevices system;
    auto nameless = microphone(1, "Headset");
    nameless.uid.clear();
    system.set({nameless});
    EXPECT_EQ(MacAudioDevices::deviceID(system, QString()), std::nullopt);
}

TEST(MacAudioDevices, FindsNoDeviceWithoutInput) {
    FakeInputDevices system;
    auto output = microphone(1, "Headset");
    output.inputChannels = 0;
    auto input = microphone(2, "Headset");
    system.set({output});
    EXPECT_EQ(MacAudioDevices::deviceID(system, QStringLiteral("uid of Headset")), std::nullopt);
    system.set({output, input});
    EXPECT_EQ(MacAudioDevices::deviceID(system, QStringLiteral("uid of Headset")), 2U);
}

TEST(MacAudioDevices, FindsADeviceThatNoListKnowsYet) {
    FakeInputDevices system;
    const MacAudioDevices devices(system);
    system.setSilently({microphone(4, "Headset")});
    EXPECT_TRUE(devices.inputs().empty());
    EXPECT_EQ(MacAudioDevices::deviceID(system, QStringLiteral("uid of Headset")), 4U);
}

TEST(MacInputDevice, HashesByItsFields) {
    const MacInputDevice one{QStringLiteral("a"), QStringLiteral("b"), false};
    MacInputDevice other = one;
    EXPECT_EQ(qHash(one), qHash(other));
    other.isBuiltIn = true;
    EXPECT_NE(qHash(one), qHash(other));
    EXPECT_NE(one, other);
}

} // namespace

} // namespace lorvane
