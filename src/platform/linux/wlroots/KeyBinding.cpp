// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/KeyBinding.h"

#include <QRegularExpression>
#include <QStringList>

#include <array>
#include <utility>

namespace lorvane {

namespace {

const std::array<std::pair<const char*, std::uint8_t>, 5> names{{{"Shift", bindingModifier::shift},
                                                                 {"Control", bindingModifier::control},
                                                                 {"Mod1", bindingModifier::mod1},
                                                                 {"Mod4", bindingModifier::mod4},
                                                                 {"Mod5", bindingModifier::mod5}}};
const std::array<std::pair<const char*, std::uint8_t>, 3> otherNames{
    {{"Ctrl", bindingModifier::control}, {"Alt", bindingModifier::mod1}, {"Super", bindingModifier::mod4}}};

constexpr int firstKey = 9;
constexpr int lastKey = 255;

QString combination(const KeyBinding& binding) {
    QString text;
    for (const auto& [name, bit] : names) {
        if ((binding.modifiers & bit) != 0) {
            text += QLatin1String(name) + QLatin1Char('+');
        }
    }
    return text + QString::number(binding.key);
}

QLatin1String flagsOf(KeyBinding::Edge edge) {
    return edge == KeyBinding::Edge::down ? QLatin1String("--inhibited")
                                          : QLatin1String("--release --locked --inhibited");
}

} // namespace

std::uint8_t bindingModifierFromName(const QString& name) {
    for (const auto& [known, bit] : names) {
        if (name.compare(QLatin1String(known), Qt::CaseInsensitive) == 0) {
            return bit;
        }
    }
    for (const auto& [known, bit] : otherNames) {
        if (name.compare(QLatin1String(known), Qt::CaseInsensitive) == 0) {
            return bit;
        }
    }
    return 0;
}

QString KeyBinding::addCommand() const {
    const bool isDown = edge == Edge::down;
    return QStringLiteral("bindcode --no-warn %1 %2 nop lorvane-%3-%4-%5")
        .arg(flagsOf(edge), combination(*this), isDown ? QLatin1String("down") : QLatin1String("up"))
        .arg(key)
        .arg(modifiers);
}

QString KeyBinding::removeCommand() const {
    return QStringLiteral("unbindcode %1 %2").arg(flagsOf(edge), combination(*this));
}

std::optional<KeyBinding> KeyBinding::fromCommand(const QString& command) {
    static const QRegularExpression form(QStringLiteral("^nop lorvane-(down|up)-([0-9]{1,3})-([0-9]{1,2})$"));
    const auto match = form.match(command);
    const int key = match.captured(2).toInt();
    const int modifiers = match.captured(3).toInt();
    if (!match.hasMatch() || key > lastKey || modifiers > bindingModifier::all) {
        return std::nullopt;
    }
    const Edge edge = match.captured(1) == QLatin1String("down") ? Edge::down : Edge::up;
    return KeyBinding{edge, key, static_cast<std::uint8_t>(modifiers)};
}

KeyBindings bindingsWithAnyModifiers(KeyBinding::Edge edge, int key) {
    KeyBindings bindings;
    for (int modifiers = 0; modifiers <= bindingModifier::all; ++modifiers) {
        bindings.insert({edge, key, static_cast<std::uint8_t>(modifiers)});
    }
    return bindings;
}

KeyBindings otherKeys(const std::vector<std::uint8_t>& modifiers, const std::set<int>& except) {
    KeyBindings bindings;
    for (int key = firstKey; key <= lastKey; ++key) {
        if (except.contains(key)) {
            continue;
        }
        for (const std::uint8_t mask : modifiers) {
            bindings.insert({KeyBinding::Edge::up, key, mask});
        }
    }
    return bindings;
}

} // namespace lorvane
