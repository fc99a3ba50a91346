// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/KeyBinding.h"

#include "platform/linux/wlroots/UserBindings.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Edge = KeyBinding::Edge;

TEST(KeyBinding, CommandsSayKeyModifiersAndFlags) {
    const KeyBinding down{Edge::down, 105, bindingModifier::shift | bindingModifier::mod4};
    EXPECT_EQ(down.addCommand(), "bindcode --no-warn --inhibited Shift+Mod4+105 nop lorvane-down-105-9");
    EXPECT_EQ(down.removeCommand(), "unbindcode --inhibited Shift+Mod4+105");
    const KeyBinding up{Edge::up, 9, 0};
    EXPECT_EQ(up.addCommand(), "bindcode --no-warn --release --locked --inhibited 9 nop lorvane-up-9-0");
    EXPECT_EQ(up.removeCommand(), "unbindcode --release --locked --inhibited 9");
}

TEST(KeyBinding, IsKnownAgainByItsCommand) {
    for (const KeyBinding& binding : bindingsWithAnyModifiers(Edge::up, 134)) {
        EXPECT_EQ(KeyBinding::fromCommand(binding.addCommand().section(QLatin1Char(' '), -2)), binding);
    }
}

TEST(KeyBinding, OtherCommandsAreNotOurs) {
    for (const char* const command :
         {"", "nop", "exec lorvane-up-9-0", "nop lorvane-up-9", "nop lorvane-up-9-0 x",
          "nop lorvane-up-999-0", "nop lorvane-up-9-32", "nop lorvane-sideways-9-0", "nop lorvane-up--9-0"}) {
        EXPECT_FALSE(KeyBinding::fromCommand(QString::fromLatin1(command))) << command;
    }
}

TEST(KeyBinding, OtherKeysLeaveOutThoseThatAreWatched) {
    const KeyBindings others = otherKeys({bindingModifier::control}, {105, 9});
    EXPECT_EQ(others.size(), 245U);
    EXPECT_FALSE(others.contains({Edge::up, 105, bindingModifier::control}));
    EXPECT_TRUE(others.contains({Edge::up, 54, bindingModifier::control}));
    EXPECT_TRUE(otherKeys({}, {}).empty());
}

TEST(UserBindings, KeysThatAreBoundAloneAreFound) {
    const auto keysOf = [](const char* config) {
        return UserBindings::read(QString::fromLatin1(config)).keys;
    };
    EXPECT_EQ(keysOf("bindsym Control_R exec menu"), std::set<int>{105});
    EXPECT_EQ(keysOf("  bindsym --release --no-warn Super_R exec menu"), std::set<int>{134});
    EXPECT_EQ(keysOf("bindcode 135 exec menu"), std::set<int>{135});
    EXPECT_EQ(keysOf("set $talk Pause\nbindsym $talk exec menu"), std::set<int>{127});
    EXPECT_EQ(keysOf("bindsym --locked {\n  F13 exec a\n  F24 exec b\n}"), (std::set<int>{191, 202}));
    EXPECT_EQ(keysOf("mode \"x\" {\n bindsym Alt_R nop\n}"), std::set<int>{108});
}

TEST(UserBindings, CombinationsOtherKeysAndCommentsDoNotCount) {
    const auto keysOf = [](const char* config) {
        return UserBindings::read(QString::fromLatin1(config)).keys;
    };
    EXPECT_TRUE(keysOf("bindsym Mod4+Control_R exec menu").empty());
    EXPECT_TRUE(keysOf("bindsym Return exec term\nbindsym F1 nop").empty());
    EXPECT_TRUE(keysOf("# bindsym Control_R exec menu\n#bindsym Menu nop").empty());
    EXPECT_TRUE(keysOf("bindsym\nbindcode --release\n{\n}\n} }\nset $x").empty());
}

TEST(UserBindings, SlowestRepeatIsFound) {
    const auto delayOf = [](const char* config) {
        return UserBindings::read(QString::fromLatin1(config)).repeatDelay;
    };
    EXPECT_EQ(delayOf(""), 600);
    EXPECT_EQ(delayOf("input * repeat_delay 300"), 600);
    EXPECT_EQ(delayOf("input type:keyboard {\n repeat_delay 900\n repeat_rate 30\n}"), 900);
    EXPECT_EQ(delayOf("input * repeat_rate 0\ninput * repeat_delay 700"), 0);
    EXPECT_EQ(delayOf("repeat_delay"), 600);
}

TEST(UserBindings, ModifiersOfReloadAreFound) {
    const auto user = UserBindings::read("set $mod Mod4\nbindsym $mod+Shift+c reload\n"
                                         "bindsym Ctrl+r exec swaymsg reload\nbindsym $mod+d exec menu");
    EXPECT_EQ(user.reloading, (std::set<std::uint8_t>{bindingModifier::mod4 | bindingModifier::shift,
                                                      bindingModifier::control}));
}

} // namespace

} // namespace lorvane
