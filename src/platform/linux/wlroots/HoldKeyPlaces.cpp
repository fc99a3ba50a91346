// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/HoldKeyPlaces.h"

#include "input/HoldKeys.h"
#include "input/KeyEvents.h"
#include "platform/linux/wlroots/KeyBinding.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <utility>

namespace lorvane {

namespace {

constexpr int menuKey = 135;
constexpr int escapeKey = 9;
constexpr int firstExtraFunctionKey = 191;

struct NamedKey {
    const char* symbol;
    int key;
};
constexpr std::array symbols{NamedKey{"Super_R", 134},    NamedKey{"Meta_R", 134},
                             NamedKey{"Alt_R", 108},      NamedKey{"ISO_Level3_Shift", 108},
                             NamedKey{"Shift_R", 62},     NamedKey{"Control_R", 105},
                             NamedKey{"Menu", menuKey},   NamedKey{"Pause", 127},
                             NamedKey{"Scroll_Lock", 78}, NamedKey{"ScrollLock", 78}};

struct ModifierPlace {
    int key;
    int keyCode;
};
constexpr std::array leftModifiers{ModifierPlace{133, 55}, ModifierPlace{64, 58}, ModifierPlace{50, 56},
                                   ModifierPlace{37, 59}};

} // namespace

std::vector<HoldKeyPlace> holdKeyPlaces(const QString& extraKey) {
    using namespace bindingModifier;
    const int extra = placeOfSymbol(extraKey);
    // With Super or Alt and Shift only what the configuration binds is a chord, and that is told anyway. The
    // extra key gives no modifier: to look for others would be to look at everything that is typed.
    return {{keyCode::rightCommand, 134, {mod4}},
            {keyCode::rightOption, 108, {mod1, mod5, shift | mod5}},
            {keyCode::rightShift, 62, {shift}},
            {keyCode::rightControl, 105, {control, shift | control}},
            {keyCode::fn, extra != 0 ? extra : menuKey, {}},
            {keyCode::escape, escapeKey, {}}};
}

int keyCodeOfPlace(int key) {
    if (key == escapeKey) {
        return keyCode::escape;
    }
    for (const ModifierPlace& modifier : leftModifiers) {
        if (modifier.key == key) {
            return modifier.keyCode;
        }
    }
    const auto places = holdKeyPlaces({});
    const auto found = std::find_if(places.begin(), places.end(),
                                    [key](const HoldKeyPlace& place) { return place.key == key; });
    return found != places.end() && found->keyCode != keyCode::fn ? found->keyCode : firstOtherKeyCode + key;
}

int placeOfSymbol(const QString& symbol) {
    const auto* const named = std::find_if(symbols.begin(), symbols.end(), [&](const NamedKey& row) {
        return symbol.compare(QLatin1String(row.symbol), Qt::CaseInsensitive) == 0;
    });
    if (named != symbols.end()) {
        return named->key;
    }
    static const QRegularExpression functionKey(QStringLiteral("^[Ff](1[3-9]|2[0-4])$"));
    const auto match = functionKey.match(symbol);
    return match.hasMatch() ? match.captured(1).toInt() - 13 + firstExtraFunctionKey : 0;
}

} // namespace lorvane
