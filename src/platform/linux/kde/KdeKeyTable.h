// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/HoldRoad.h"

#include <QList>
#include <QString>

#include <optional>

namespace lorvane {

/// A key as the shortcut service of KDE knows it.
struct KdeKey {
    /// The name of our shortcut for it, the same in every run.
    QString action;
    /// The name on the key.
    QString keyName;
    /// Qt::Key values with modifiers. The first must be had, the others are for other keymaps.
    QList<int> qtKeys;
    HoldKeyOffer offer;
};

/// The key of a code (KeyEvents.h); nothing for one that can be no shortcut there: Super, and other keys than
/// the hotkeys and Escape. `extraKey`: the preference "tirra.linux.extraKey".
[[nodiscard]] std::optional<KdeKey> kdeKeyOf(int keyCode, const QString& extraKey);
/// Every code that `kdeKeyOf` may know.
[[nodiscard]] QList<int> kdeKeyCodes();
/// Escape while that hold key is down is a shortcut of its own.
[[nodiscard]] int escapeWith(int heldKeyCode);

} // namespace lorvane
