// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/KdeKeyTable.h"

#include "input/KeyEvents.h"

#include <QHash>

namespace lorvane {

namespace {

constexpr int functionKeys = 12; // F13 to F24

// The usual keymap gives F14 to F18 the symbols of launch keys; with the option fkeys:basic_13-24 they carry
// their own.
QList<int> functionKey(int number) {
    constexpr int launchesFrom = 14;
    constexpr int launchesTo = 18;
    QList<int> keys{Qt::Key_F1 + number - 1};
    if (number >= launchesFrom && number <= launchesTo) {
        keys.append(Qt::Key_Launch7 + number - launchesFrom);
    }
    return keys;
}

QHash<QString, QList<int>> extraKeys() {
    QHash<QString, QList<int>> keys{{QString(), {Qt::Key_Menu}},
                                    {QStringLiteral("Menu"), {Qt::Key_Menu}},
                                    {QStringLiteral("Pause"), {Qt::Key_Pause}},
                                    {QStringLiteral("ScrollLock"), {Qt::Key_ScrollLock}}};
    constexpr int first = 13;
    for (int number = first; number < first + functionKeys; ++number) {
        keys.insert(QStringLiteral("F%1").arg(number), functionKey(number));
    }
    return keys;
}

KdeKey modifierKey(const QString& name, int code, const QList<int>& qtKeys) {
    return {QStringLiteral("dictate-") + name.toLower(), name, qtKeys, {code, false, ChordSight::endsHold}};
}

std::optional<KdeKey> extraKeyNamed(const QString& name) {
    const QList<int> keys = extraKeys().value(name);
    if (keys.isEmpty()) {
        return std::nullopt;
    }
    const QString shown = name.isEmpty() ? QStringLiteral("Menu") : name;
    return KdeKey{QStringLiteral("dictate-extra"), shown, keys, {keyCode::fn, true, ChordSight::dedicated}};
}

} // namespace

std::optional<KdeKey> kdeKeyOf(int code, const QString& extraKey) {
    switch (code) {
    case keyCode::rightControl:
        return modifierKey(QStringLiteral("Ctrl"), code, {Qt::Key_Control});
    case keyCode::rightOption:
        // AltGr stands on the right in the keymaps that have it.
        return modifierKey(QStringLiteral("Alt"), code, {Qt::Key_Alt, Qt::Key_AltGr});
    case keyCode::rightShift:
        return modifierKey(QStringLiteral("Shift"), code, {Qt::Key_Shift});
    case keyCode::fn:
        return extraKeyNamed(extraKey);
    case keyCode::escape:
        return KdeKey{QStringLiteral("cancel"),
                      QStringLiteral("Esc"),
                      {Qt::Key_Escape},
                      {code, true, ChordSight::dedicated}};
    default:
        return std::nullopt;
    }
}

QList<int> kdeKeyCodes() {
    return {keyCode::rightControl, keyCode::rightOption, keyCode::rightShift, keyCode::fn, keyCode::escape};
}

int escapeWith(int heldKeyCode) {
    switch (heldKeyCode) {
    case keyCode::rightControl:
        return static_cast<int>(Qt::ControlModifier) | Qt::Key_Escape;
    case keyCode::rightOption:
        return static_cast<int>(Qt::AltModifier) | Qt::Key_Escape;
    case keyCode::rightShift:
        return static_cast<int>(Qt::ShiftModifier) | Qt::Key_Escape;
    default:
        return Qt::Key_Escape;
    }
}

} // namespace lorvane
