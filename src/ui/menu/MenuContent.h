// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/MacAudioDevices.h"
#include "base/Localisation.h"
#include "input/Hotkey.h"
#include "ui/languages/LanguageNames.h"

#include <optional>
#include <vector>

namespace lorvane {

/// One value that a picker offers.
struct MenuChoice {
    QString value;
    QString title;
    bool isChosen = false;
    friend bool operator==(const MenuChoice&, const MenuChoice&) = default;
};

struct MenuEntry {
    enum class Kind { divider, text, action, toggle, picker };
    Kind kind = Kind::divider;
    /// Names what happens; empty for a divider and a text.
    QString id;
    QString title;
    /// Of a toggle.
    bool isOn = false;
    /// Of a picker.
    std::vector<MenuChoice> choices;
    friend bool operator==(const MenuEntry&, const MenuEntry&) = default;
};

namespace menu {
inline const QString update = QStringLiteral("update");
inline const QString enableAccessibility = QStringLiteral("enableAccessibility");
inline const QString open = QStringLiteral("open");
inline const QString translateTo = QStringLiteral("translateTo");
inline const QString language = QStringLiteral("language");
inline const QString microphone = QStringLiteral("microphone");
inline const QString copyLast = QStringLiteral("copyLast");
inline const QString typingTips = QStringLiteral("typingTips");
inline const QString hotkey = QStringLiteral("hotkey");
inline const QString checkForUpdates = QStringLiteral("checkForUpdates");
inline const QString sendFeedback = QStringLiteral("sendFeedback");
inline const QString quit = QStringLiteral("quit");
} // namespace menu

/// What the menu is made of.
struct MenuState {
    /// The version that waits, as the user reads it.
    std::optional<QString> availableUpdate;
    bool permissionsGranted = true;
    QString translateLang;
    QString speakLang;
    QString inputUID;
    bool nudgesOn = true;
    std::vector<MacInputDevice> inputs;
    Hotkey hotkey = Hotkey::rightCommand;
};

/// The entries of the menu, top to bottom, in the words of the user.
[[nodiscard]] std::vector<MenuEntry> menuContent(const MenuState& state, const Localisation& words,
                                                 const LanguageNames& languages);

} // namespace lorvane
