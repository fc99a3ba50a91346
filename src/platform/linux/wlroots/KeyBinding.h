// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <compare>
#include <cstdint>
#include <optional>
#include <set>
#include <vector>

namespace lorvane {

/// Modifiers of a binding, by the names that the compositor's commands have for them.
namespace bindingModifier {
constexpr std::uint8_t shift = 1;
constexpr std::uint8_t control = 2;
constexpr std::uint8_t mod1 = 4;
constexpr std::uint8_t mod4 = 8;
constexpr std::uint8_t mod5 = 16;
constexpr std::uint8_t all = 31;
} // namespace bindingModifier

/// The bit of a modifier as the user's configuration names it; 0 for what is none.
[[nodiscard]] std::uint8_t bindingModifierFromName(const QString& name);

/// One binding of ours in the compositor. It runs `nop`, which does nothing, and all who listen are told. Its
/// flags differ from those of an ordinary binding, so that it never takes the place of one of the user's, and
/// the user's comes first where both are there (sway(5), `bindsym`).
struct KeyBinding {
    enum class Edge {
        down, ///< keeps the press from applications, and repeats; not while the screen is locked
        up,   ///< a release after a press with no other key in between; keeps nothing from anyone
    };
    Edge edge = Edge::down;
    /// Code of Linux input events plus 8.
    int key = 0;
    std::uint8_t modifiers = 0;

    [[nodiscard]] QString addCommand() const;
    [[nodiscard]] QString removeCommand() const;
    /// From the command in the event of a binding; nothing for one that is not ours.
    [[nodiscard]] static std::optional<KeyBinding> fromCommand(const QString& command);
    friend auto operator<=>(const KeyBinding&, const KeyBinding&) = default;
};

using KeyBindings = std::set<KeyBinding>;

/// A key with every combination of modifiers that may be down before it.
[[nodiscard]] KeyBindings bindingsWithAnyModifiers(KeyBinding::Edge edge, int key);

/// The releases of every key with any of these modifiers, but for `except`: another key that goes down while
/// one is held shows by them when it goes up, and still reaches its application.
[[nodiscard]] KeyBindings otherKeys(const std::vector<std::uint8_t>& modifiers, const std::set<int>& except);

} // namespace lorvane
